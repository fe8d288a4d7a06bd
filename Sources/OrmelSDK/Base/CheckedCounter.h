#pragma once

#include <cstdint>

namespace ormel::detail {

/// Adds 1. A counter that would overflow ends the process: what it orders could not be told apart any more.
void incrementCounter(std::uint64_t& counter);

}  // namespace ormel::detail
