#pragma once

#include <cstddef>

namespace ormel::testing {

/// What a process can leave behind of the children that it started.
struct ProcessResources {
  std::size_t descriptors = 0;
  std::size_t threads = 0;
  /// Children that run or have not been reaped.
  bool hasChildren = false;

  static ProcessResources now();

  friend bool operator==(const ProcessResources&, const ProcessResources&) = default;
};

}  // namespace ormel::testing
