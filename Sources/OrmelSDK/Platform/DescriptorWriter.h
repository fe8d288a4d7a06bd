#pragma once

#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

#include "OrmelSDK/Platform/FileDescriptor.h"

namespace ormel::detail {

/// Writes a queue of bytes to a pipe on the threads of an I/O context, which block SIGPIPE.
///
/// A writer is open, then closing (no more is taken, the rest is written), then closed; a broken pipe or `close`
/// leads from either to closed at once and drops what is queued.
///
/// *Thread safety*: all members may be called from any thread; none of them blocks.
class DescriptorWriter final : public std::enable_shared_from_this<DescriptorWriter> {
 public:
  /// Fails with `ProcessLaunchError` when the system has no room to watch one more descriptor.
  DescriptorWriter(asio::io_context& context, FileDescriptor descriptor);

  /// Queues bytes. Does nothing unless the writer is open.
  void write(std::string bytes);

  /// Closes the pipe when everything queued has been written.
  void closeWhenWritten();

  /// Closes the pipe now.
  void close() noexcept;

  bool isOpen() const;

 private:
  enum class Progress { someWritten, everythingWritten, pipeFull, closed };

  void writeQueued(int turns);
  Progress writeOnceLocked();
  void waitLocked();
  void closeLocked() noexcept;

  mutable std::mutex mutex_;
  asio::io_context& context_;
  asio::posix::stream_descriptor descriptor_;
  std::deque<std::string> queue_;
  /// Number of bytes of the first queued item that are already written.
  std::size_t written_ = 0;
  /// A thread is writing, or a wait for the pipe to become writable is pending.
  bool busy_ = false;
  bool closing_ = false;
};

}  // namespace ormel::detail
