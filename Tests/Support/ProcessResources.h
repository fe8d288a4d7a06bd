#pragma once

#include <cstddef>

namespace ormel::testing {

/// The resources that a process can leave behind of the children that it started.
struct ProcessResources {
  std::size_t descriptors = 0;
  std::size_t threads = 0;
  /// The memory that is in use; 0 where the system does not tell.
  std::size_t residentBytes = 0;
  /// Children that run or have not been reaped.
  bool hasChildren = false;

  static ProcessResources now();

  /// Whether there is no child and nothing more than before. Less than before is no leak: what an earlier test used
  /// may have gone away since.
  bool isNoMoreThan(const ProcessResources& before) const {
    return !hasChildren && descriptors <= before.descriptors && threads <= before.threads;
  }
};

}  // namespace ormel::testing
