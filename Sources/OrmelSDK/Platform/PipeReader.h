#pragma once

#include <functional>

#include "OrmelSDK/Base/ByteBuffer.h"

namespace ormel::detail {

/// What a reader of a pipe calls, one at a time and in this order: for each chunk `onReadStart` and then `onChunk`;
/// at the end of file `onReadStart` and then `onEnd`, which is the last call.
///
/// `onReadStart` comes before any byte is taken out of the pipe, so at each moment the bytes that are under way are
/// in the pipe, or a read is in progress, or the chunk has been delivered. A chunk is never empty. Any of them may
/// be empty. They run on threads of the pool, hold no lock, and must neither block nor throw.
struct PipeReadHandlers {
  PipeReadHandlers() = default;

  std::function<void()> onReadStart;
  std::function<void(ByteBuffer)> onChunk;
  std::function<void()> onEnd;
};

/// The read end of a pipe from a child.
///
/// *Thread safety*: all members may be called from any thread, also from the handlers.
///
/// *Object lifetimes*: a reader that has been started lives until the end of file or `stop`, whoever else holds it,
/// and lets go of the handlers then.
class PipeReader {
 public:
  virtual ~PipeReader() = default;

  /// Begins to read, once in the reader's life. After `stop` nothing begins.
  virtual void start(PipeReadHandlers handlers) = 0;

  /// Ends reading and closes the pipe; a child that writes on gets a broken pipe. No handler is entered after it
  /// returns, except that one which another thread was just about to call may still run. A read that was started is
  /// then not answered by a chunk or an end.
  virtual void stop() noexcept = 0;

  /// Whether the pipe holds bytes that nobody has taken. A hang-up alone is not unread bytes; false once the end of
  /// file has been read or the reader stopped. Never blocks.
  virtual bool hasUnreadBytes() const noexcept = 0;
};

}  // namespace ormel::detail
