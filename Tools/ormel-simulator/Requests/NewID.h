#pragma once

#include <string>

namespace ormel::simulator {

/// An id that no other thread or turn has.
std::string newID();

}  // namespace ormel::simulator
