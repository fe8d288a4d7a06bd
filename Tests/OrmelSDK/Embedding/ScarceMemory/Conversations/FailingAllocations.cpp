#include "OrmelSDK/Embedding/ScarceMemory/FailingAllocations.h"

#include <execinfo.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> isArmed{false};
std::atomic<bool> failed{false};
std::atomic<long> left{0};
std::atomic<long> run{1};
std::atomic<long> blocks{0};
void* callers[40];
std::atomic<int> callerCount{0};

bool failsNow() noexcept {
  if (!isArmed.load(std::memory_order_relaxed)) return false;
  const long before = left.fetch_sub(1);
  if (before > 1 || before <= 1 - run.load(std::memory_order_relaxed)) return false;
  if (before == 1) {
    callerCount = ::backtrace(callers, 40);
    failed = true;
  }
  return true;
}

void* allocated(std::size_t size, std::size_t alignment) noexcept {
  if (failsNow()) return nullptr;
  const std::size_t rounded = (size + alignment - 1) / alignment * alignment;
  void* const block = alignment <= alignof(std::max_align_t) ? std::malloc(size == 0 ? 1 : size)
                                                             : std::aligned_alloc(alignment, rounded);
  if (block) blocks.fetch_add(1, std::memory_order_relaxed);
  return block;
}

void* allocatedOrThrown(std::size_t size, std::size_t alignment) {
  if (void* const block = allocated(size, alignment)) return block;
  throw std::bad_alloc();
}

void freed(void* block) noexcept {
  if (!block) return;
  blocks.fetch_sub(1, std::memory_order_relaxed);
  std::free(block);
}

constexpr std::size_t usual = alignof(std::max_align_t);
std::size_t number(std::align_val_t alignment) { return static_cast<std::size_t>(alignment); }

}  // namespace

void* operator new(std::size_t size) { return allocatedOrThrown(size, usual); }
void* operator new[](std::size_t size) { return allocatedOrThrown(size, usual); }
void* operator new(std::size_t size, std::align_val_t align) { return allocatedOrThrown(size, number(align)); }
void* operator new[](std::size_t size, std::align_val_t align) { return allocatedOrThrown(size, number(align)); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocated(size, usual); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocated(size, usual); }
void* operator new(std::size_t size, std::align_val_t align, const std::nothrow_t&) noexcept {
  return allocated(size, number(align));
}
void* operator new[](std::size_t size, std::align_val_t align, const std::nothrow_t&) noexcept {
  return allocated(size, number(align));
}
void operator delete(void* block) noexcept { freed(block); }
void operator delete[](void* block) noexcept { freed(block); }
void operator delete(void* block, std::size_t) noexcept { freed(block); }
void operator delete[](void* block, std::size_t) noexcept { freed(block); }
void operator delete(void* block, std::align_val_t) noexcept { freed(block); }
void operator delete[](void* block, std::align_val_t) noexcept { freed(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { freed(block); }
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept { freed(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { freed(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { freed(block); }

namespace ormel::testing {

void FailingAllocations::arm(long number, long count) noexcept {
  failed = false;
  callerCount = 0;
  run = count;
  left = number;
  isArmed = true;
}

bool FailingAllocations::disarm() noexcept {
  isArmed = false;
  return failed;
}

bool FailingAllocations::hasFailed() noexcept { return failed; }

long FailingAllocations::living() noexcept { return blocks; }

void FailingAllocations::tellWhere(int descriptor) noexcept {
  ::backtrace_symbols_fd(callers, callerCount, descriptor);
}

}  // namespace ormel::testing
