#pragma once

#include <cstddef>

#include "OrmelSDK/Base/ByteBuffer.h"

namespace ormel::detail {

/// The most that one read of a pipe takes, in bytes: what a pipe of the usual size holds.
inline constexpr std::size_t largestChunk = std::size_t{64} * 1024;

/// An empty buffer with room for the largest chunk, one that was given back if there is any.
///
/// A chunk is filled on one thread and freed on another. Left to the allocator its memory would go back to the system
/// each time, and the next read would pay for every page of it again.
ByteBuffer takeChunkBuffer();

/// Keeps the buffer for a later chunk. A buffer of another size, or one more than a few, is freed.
void giveBackChunkBuffer(ByteBuffer buffer) noexcept;

}  // namespace ormel::detail
