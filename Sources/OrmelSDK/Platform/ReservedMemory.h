#pragma once

#include <asio/recycling_allocator.hpp>
#include <cstddef>
#include <new>

namespace ormel::detail {

/// A few blocks that stand ready for when there is no memory left: work can then still be queued where a failure to do
/// so could not be told to anybody, and ends soon, which gives its block back.
///
/// *Thread safety*: all members may be called from any thread.
class ReservedMemory {
 public:
  /// Ends the process when all blocks are taken.
  static void* take(std::size_t size) noexcept;
  static bool has(const void* block) noexcept;
  static void giveBack(const void* block) noexcept;
};

/// The allocator for everything that is queued in the I/O context. It never fails.
template <typename T>
class ReservedAllocator {
 public:
  using value_type = T;

  ReservedAllocator() noexcept = default;
  template <typename U>
  ReservedAllocator(const ReservedAllocator<U>&) noexcept {}

  T* allocate(std::size_t count) noexcept {
    try {
      return asio::recycling_allocator<T>().allocate(count);
    } catch (const std::bad_alloc&) {
      return static_cast<T*>(ReservedMemory::take(count * sizeof(T)));
    }
  }
  void deallocate(T* block, std::size_t count) noexcept {
    if (ReservedMemory::has(block)) {
      ReservedMemory::giveBack(block);
    } else {
      asio::recycling_allocator<T>().deallocate(block, count);
    }
  }

  template <typename U>
  friend bool operator==(const ReservedAllocator&, const ReservedAllocator<U>&) noexcept {
    return true;
  }
};

}  // namespace ormel::detail
