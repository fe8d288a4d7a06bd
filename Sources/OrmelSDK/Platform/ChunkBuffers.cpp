#include "OrmelSDK/Platform/ChunkBuffers.h"

#include <array>
#include <mutex>
#include <utility>

namespace ormel::detail {

namespace {

/// Enough for a reader that is a little ahead of its consumer.
constexpr std::size_t mostKept = 8;

struct KeptBuffers {
  std::mutex mutex;
  std::array<ByteBuffer, mostKept> buffers;
  std::size_t count = 0;
};

KeptBuffers& keptBuffers() {
  // Never destroyed: threads of the pool may use it until the very end of the process.
  static auto& kept = *new KeptBuffers();
  return kept;
}

}  // namespace

ByteBuffer takeChunkBuffer() {
  ByteBuffer buffer;
  auto& kept = keptBuffers();
  {
    const std::lock_guard lock(kept.mutex);
    if (kept.count > 0) buffer = std::move(kept.buffers[--kept.count]);
  }
  buffer.room(largestChunk);
  return buffer;
}

void giveBackChunkBuffer(ByteBuffer buffer) noexcept {
  if (buffer.capacity() != largestChunk) return;
  buffer.clear();
  auto& kept = keptBuffers();
  const std::lock_guard lock(kept.mutex);
  if (kept.count < mostKept) kept.buffers[kept.count++] = std::move(buffer);
}

}  // namespace ormel::detail
