#include "OrmelSDK/Platform/DescriptorWriter.h"

#include <errno.h>
#include <unistd.h>

#include <algorithm>
#include <asio/bind_allocator.hpp>
#include <asio/post.hpp>

#include "OrmelSDK/Concurrency/ExecutionState.h"
#include "OrmelSDK/Platform/ReservedMemory.h"
#include "OrmelSDK/Platform/SignalMask.h"
#include "OrmelSDK/Platform/WatchedDescriptor.h"

namespace ormel::detail {

namespace {

/// Maximum number of bytes in one write, which bounds how long the lock is held.
constexpr std::size_t largestWrite = std::size_t{64} * 1024;

/// After this many writes in a row the writer yields to other work of the thread.
constexpr int writesPerTurn = 16;

}  // namespace

DescriptorWriter::DescriptorWriter(asio::io_context& context, FileDescriptor descriptor)
    : context_(context), descriptor_(watchedDescriptor(context, std::move(descriptor))) {}

void DescriptorWriter::write(std::string bytes) {
  if (bytes.empty()) return;
  {
    const std::lock_guard lock(mutex_);
    if (!descriptor_.is_open() || closing_) return;
    queue_.push_back(std::move(bytes));
    if (busy_) return;
    busy_ = true;
  }
  // On a thread that does not block SIGPIPE a dead child would end the application.
  if (executionState().isPoolThread) return writeQueued(1);
  asio::post(context_, asio::bind_allocator(ReservedAllocator<void>(),
                                            [self = shared_from_this()] { self->writeQueued(writesPerTurn); }));
}

void DescriptorWriter::closeWhenWritten() {
  const std::lock_guard lock(mutex_);
  closing_ = true;
  if (!busy_) closeLocked();
}

void DescriptorWriter::close() noexcept {
  const std::lock_guard lock(mutex_);
  closeLocked();
}

bool DescriptorWriter::isOpen() const {
  const std::lock_guard lock(mutex_);
  return descriptor_.is_open() && !closing_;
}

void DescriptorWriter::writeQueued(int turns) {
  for (int turn = 0; turn < turns; ++turn) {
    const std::lock_guard lock(mutex_);
    switch (writeOnceLocked()) {
      case Progress::everythingWritten:
        busy_ = false;
        if (closing_) closeLocked();
        return;
      case Progress::pipeFull:
        return waitLocked();
      case Progress::closed:
        return;
      case Progress::someWritten:
        break;
    }
  }
  const std::lock_guard lock(mutex_);
  if (descriptor_.is_open()) waitLocked();
}

DescriptorWriter::Progress DescriptorWriter::writeOnceLocked() {
  if (!descriptor_.is_open()) return Progress::closed;
  const std::string& first = queue_.front();
  const auto count =
      ::write(descriptor_.native_handle(), first.data() + written_, std::min(first.size() - written_, largestWrite));
  if (count < 0) {
    if (errno == EINTR) return Progress::someWritten;
    if (errno == EAGAIN) return Progress::pipeFull;
    // The signal of a dead peer waits in this thread, whose next piece may be code of the application.
    if (errno == EPIPE) discardPendingPipeSignal();
    closeLocked();
    return Progress::closed;
  }
  written_ += static_cast<std::size_t>(count);
  if (written_ < first.size()) return Progress::someWritten;
  queue_.pop_front();
  written_ = 0;
  return queue_.empty() ? Progress::everythingWritten : Progress::someWritten;
}

void DescriptorWriter::waitLocked() {
  descriptor_.async_wait(
      asio::posix::stream_descriptor::wait_write,
      asio::bind_allocator(ReservedAllocator<void>(),
                           [self = shared_from_this()](const asio::error_code&) { self->writeQueued(writesPerTurn); }));
}

void DescriptorWriter::closeLocked() noexcept {
  asio::error_code ignored;
  descriptor_.close(ignored);
  queue_.clear();
}

}  // namespace ormel::detail
