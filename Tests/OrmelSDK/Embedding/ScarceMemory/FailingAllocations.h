#pragma once

#include <cstddef>

namespace ormel::testing {

/// The replaced `operator new` of this program: while armed, the allocation of the given number fails, counted from one
/// over all threads, and as many as `count` says in all.
class FailingAllocations {
 public:
  static void arm(long number, long count = 1) noexcept;
  /// Whether the allocation of that number was made.
  static bool disarm() noexcept;
  /// Whether an allocation has failed since it was armed.
  static bool hasFailed() noexcept;
  /// The allocations that have been made and not freed.
  static long living() noexcept;
  /// The addresses of the calls that led to the first failed allocation, written to the descriptor.
  static void tellWhere(int descriptor) noexcept;
};

}  // namespace ormel::testing
