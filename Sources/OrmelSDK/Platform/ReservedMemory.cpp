#include "OrmelSDK/Platform/ReservedMemory.h"

#include <atomic>
#include <bit>
#include <cstdint>
#include <functional>

#include "OrmelSDK/Base/FatalError.h"

namespace ormel::detail {

namespace {

/// More than any operation of the I/O context takes.
constexpr std::size_t blockSize = 256;
constexpr std::size_t blockCount = 64;

alignas(std::max_align_t) constinit std::byte reserve[blockCount * blockSize] = {};
/// A bit for each block that is taken.
constinit std::atomic<std::uint64_t> taken{0};

}  // namespace

void* ReservedMemory::take(std::size_t size) noexcept {
  std::uint64_t before = taken.load(std::memory_order_relaxed);
  while (size <= blockSize && ~before != 0) {
    const auto free = static_cast<std::size_t>(std::countr_one(before));
    if (taken.compare_exchange_weak(before, before | (std::uint64_t{1} << free), std::memory_order_acquire)) {
      return reserve + free * blockSize;
    }
  }
  fatalError("Out of memory in the queue of the library's threads");
}

bool ReservedMemory::has(const void* block) noexcept {
  const std::less<const void*> isBefore;
  return !isBefore(block, reserve) && isBefore(block, reserve + sizeof reserve);
}

void ReservedMemory::giveBack(const void* block) noexcept {
  const auto index = static_cast<std::size_t>(static_cast<const std::byte*>(block) - reserve) / blockSize;
  taken.fetch_and(~(std::uint64_t{1} << index), std::memory_order_release);
}

}  // namespace ormel::detail
