#include "OrmelSDK/Platform/DescriptorWriter.h"

#include <errno.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "OrmelSDK/Concurrency/ExecutionState.h"
#include "OrmelSDK/Platform/SignalMask.h"

namespace ormel::detail {

namespace {

/// Maximum number of bytes in one write, which bounds how long the lock is held.
constexpr std::size_t largestWrite = std::size_t{64} * 1024;

/// After this many writes in a row the writer yields to other work of the thread.
constexpr int writesPerTurn = 16;

}  // namespace

DescriptorWriter::DescriptorWriter(EventLoop& loop, FileDescriptor descriptor)
    : WatchedDescriptor(loop, std::move(descriptor)) {}

void DescriptorWriter::write(std::string bytes) {
  if (bytes.empty()) return;
  {
    const std::lock_guard lock(mutex_);
    if (!isOpen() || closing_) return;
    queue_.push_back(std::move(bytes));
    if (busy_) return;
    busy_ = true;
    keepsItself_ = shared_from_this();
  }
  // On a thread that does not block SIGPIPE a dead child would end the application.
  if (executionState().isPoolThread) return writeQueued(1);
  readyAgain();
}

void DescriptorWriter::closeWhenWritten() {
  const std::lock_guard lock(mutex_);
  closing_ = true;
  if (!busy_) closeLocked();
}

void DescriptorWriter::close() noexcept {
  std::shared_ptr<WatchedDescriptor> kept;
  const std::lock_guard lock(mutex_);
  closeLocked();
  kept = std::move(keepsItself_);
}

bool DescriptorWriter::acceptsBytes() const {
  const std::lock_guard lock(mutex_);
  return isOpen() && !closing_;
}

void DescriptorWriter::ready(bool) noexcept {
  {
    const std::lock_guard lock(mutex_);
    if (!busy_) return;
  }
  writeQueued(writesPerTurn);
}

void DescriptorWriter::writeQueued(int turns) {
  std::shared_ptr<WatchedDescriptor> kept;
  for (int turn = 0; turn < turns; ++turn) {
    const std::lock_guard lock(mutex_);
    switch (writeOnceLocked()) {
      case Progress::everythingWritten:
        busy_ = false;
        kept = std::move(keepsItself_);
        if (closing_) closeLocked();
        return;
      case Progress::pipeFull:
        if (!std::exchange(isWatched_, true)) watch(Interest::writing);
        return;
      case Progress::closed:
        kept = std::move(keepsItself_);
        return;
      case Progress::someWritten:
        break;
    }
  }
  readyAgain();
}

DescriptorWriter::Progress DescriptorWriter::writeOnceLocked() {
  if (!isOpen()) return Progress::closed;
  // Another thread, woken by a change of the pipe, was quicker.
  if (queue_.empty()) return Progress::everythingWritten;
  const std::string& first = queue_.front();
  const auto count = ::write(number(), first.data() + written_, std::min(first.size() - written_, largestWrite));
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

void DescriptorWriter::closeLocked() noexcept {
  WatchedDescriptor::close();
  queue_.clear();
}

}  // namespace ormel::detail
