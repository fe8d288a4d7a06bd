#pragma once

#include <cstdint>

namespace ormel::detail {

/// Increments the counter. An overflow ends the process: repeated numbers could not be told apart.
void incrementCounter(std::uint64_t& counter);

}  // namespace ormel::detail
