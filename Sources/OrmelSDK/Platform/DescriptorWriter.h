#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

#include "OrmelSDK/Platform/WatchedDescriptor.h"

namespace ormel::detail {

/// Writes a queue of bytes to a pipe on the threads of an event loop, which block SIGPIPE.
///
/// A writer is open, then closing (no more is taken, the rest is written), then closed; a broken pipe or `close`
/// leads from either to closed at once and drops what is queued.
///
/// *Thread safety*: all members may be called from any thread; none of them blocks.
class DescriptorWriter final : public WatchedDescriptor {
 public:
  /// Fails with `ProcessLaunchError` when the system has no room to watch one more descriptor.
  DescriptorWriter(EventLoop& loop, FileDescriptor descriptor);

  /// Queues bytes. Does nothing unless the writer is open.
  void write(std::string bytes);

  /// Closes the pipe when everything queued has been written.
  void closeWhenWritten();

  /// Closes the pipe now.
  void close() noexcept;

  bool acceptsBytes() const;

 private:
  enum class Progress { someWritten, everythingWritten, pipeFull, closed };

  void ready(bool hungUp) noexcept override;
  void writeQueued(int turns);
  Progress writeOnceLocked();
  void closeLocked() noexcept;

  mutable std::mutex mutex_;
  std::deque<std::string> queue_;
  /// Number of bytes of the first queued item that are already written.
  std::size_t written_ = 0;
  /// A thread is writing or is about to, or the pipe is full.
  bool busy_ = false;
  /// The pipe has been full once, and since then the loop tells when it no longer is.
  bool isWatched_ = false;
  /// Set while bytes are left that a thread of the loop is to write.
  std::shared_ptr<WatchedDescriptor> keepsItself_;
  bool closing_ = false;
};

}  // namespace ormel::detail
