#pragma once

#include <exception>
#include <functional>

#include "OrmelSDK/Base/ByteBuffer.h"

namespace ormel::detail {

/// Callbacks of a pipe reader, called one at a time and in this order: for each chunk `onReadStart` and then `onChunk`;
/// at the end of file `onReadStart` and then `onEnd`, which is the last call; `onReadStart` and then `onNothing` where
/// a read has found neither. Where there is no memory for a chunk, or `onChunk` throws, reading ends with `onFailure`
/// instead, or with `onEnd` if that is unset.
///
/// `onReadStart` comes before any byte is taken out of the pipe, so at each moment the bytes in transit are in the
/// pipe, or a read is in progress, or the chunk has been delivered. A chunk is never empty. Each callback may be left
/// unset. They run on threads of the pool with no lock held, and must not block; none but `onChunk` may throw.
struct PipeReadHandlers {
  PipeReadHandlers() = default;

  std::function<void()> onReadStart;
  std::function<void(ByteBuffer)> onChunk;
  std::function<void()> onNothing;
  std::function<void()> onEnd;
  std::function<void(std::exception_ptr)> onFailure;
};

/// The read end of a pipe from a child.
///
/// *Thread safety*: all members may be called from any thread, also from the handlers.
///
/// *Object lifetimes*: a started reader keeps itself alive until the end of file or `stop`, and then releases the
/// handlers.
class PipeReader {
 public:
  virtual ~PipeReader() = default;

  /// Begins to read, once in the reader's life. After `stop` nothing begins.
  virtual void start(PipeReadHandlers handlers) = 0;

  /// Ends reading and closes the pipe; a child that keeps writing gets a broken pipe. No handler is entered after it
  /// returns, except one that another thread was just about to call. A read that was announced is then followed by
  /// neither a chunk nor an end.
  virtual void stop() noexcept = 0;

  /// Whether the pipe holds unread bytes. A hang-up alone is not unread bytes; false once the end of
  /// file has been read or the reader stopped. Never blocks.
  virtual bool hasUnreadBytes() const noexcept = 0;
};

}  // namespace ormel::detail
