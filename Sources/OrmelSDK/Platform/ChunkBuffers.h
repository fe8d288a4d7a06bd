#pragma once

#include <cstddef>

#include "OrmelSDK/Base/ByteBuffer.h"

namespace ormel::detail {

/// Maximum number of bytes in one read of a pipe: the usual capacity of a pipe.
inline constexpr std::size_t largestChunk = std::size_t{64} * 1024;

/// An empty buffer with room for the largest chunk, recycled if one is available.
///
/// A chunk is filled on one thread and freed on another. The allocator would return its memory to the system each time,
/// and the next read would fault every page in again.
ByteBuffer takeChunkBuffer();

/// Recycles the buffer. A buffer of another size is freed, and so is one beyond the few that are kept.
void giveBackChunkBuffer(ByteBuffer buffer) noexcept;

}  // namespace ormel::detail
