#include "OrmelSDK/Platform/DescriptorReader.h"

#include <errno.h>
#include <unistd.h>

#include <new>
#include <utility>

#include "OrmelSDK/Platform/ChunkBuffers.h"

namespace ormel::detail {

namespace {

/// A chunk that fills less of the buffer than this is copied out, so that a queue of short lines stays small.
constexpr std::size_t worthKeepingWhole = largestChunk / 2;

/// After this many chunks in a row the reader yields to other work of the thread.
constexpr int chunksPerTurn = 16;

/// Moves what was read into a buffer of its own unless it fills this one.
ByteBuffer chunkOf(ByteBuffer buffer) {
  if (buffer.size() >= worthKeepingWhole) return buffer;
  ByteBuffer copy;
  try {
    copy.append(buffer.view());
  } catch (const std::bad_alloc&) {
    return buffer;
  }
  giveBackChunkBuffer(std::move(buffer));
  return copy;
}

ssize_t readInto(ByteBuffer& buffer, int descriptor) {
  ssize_t count = 0;
  do {
    count = ::read(descriptor, buffer.data(), largestChunk);
  } while (count < 0 && errno == EINTR);
  if (count > 0) buffer.commit(static_cast<std::size_t>(count));
  return count;
}

void callIfSet(const std::function<void()>& handler) {
  if (handler) handler();
}

}  // namespace

DescriptorReader::DescriptorReader(EventLoop& loop, FileDescriptor descriptor)
    : WatchedDescriptor(loop, std::move(descriptor)) {}

void DescriptorReader::start(PipeReadHandlers handlers) {
  const std::lock_guard lock(mutex_);
  if (!isOpen() || handlers_) return;
  handlers_ = std::make_shared<const PipeReadHandlers>(std::move(handlers));
  keepsItself_ = shared_from_this();
  watch(Interest::reading);
}

void DescriptorReader::stop() noexcept {
  std::shared_ptr<WatchedDescriptor> kept;
  Handlers released;
  const std::lock_guard lock(mutex_);
  released = closeLocked();
  kept = std::move(keepsItself_);
}

bool DescriptorReader::hasUnreadBytes() const noexcept {
  const std::lock_guard lock(mutex_);
  return isOpen() && hasReadableBytes(number());
}

void DescriptorReader::ready(bool hungUp) noexcept {
  for (int chunks = 0; chunks < chunksPerTurn; ++chunks) {
    const auto handlers = currentHandlers();
    if (!handlers) return;
    callIfSet(handlers->onReadStart);
    try {
      if (!readAndDeliver(*handlers, hungUp)) return;
    } catch (...) {
      return fail(*handlers, std::current_exception());
    }
  }
  readyAgain();
}

/// Whether there may be more.
bool DescriptorReader::readAndDeliver(const PipeReadHandlers& handlers, bool hungUp) {
  auto found = read(hungUp);
  if (!found) return false;
  if (found->isEnd) {
    callIfSet(handlers.onEnd);
  } else if (found->chunk.empty()) {
    callIfSet(handlers.onNothing);
  } else if (handlers.onChunk) {
    handlers.onChunk(std::move(found->chunk));
  }
  return found->mayHaveMore;
}

void DescriptorReader::fail(const PipeReadHandlers& handlers, const std::exception_ptr& failure) {
  stop();
  if (handlers.onFailure) {
    handlers.onFailure(failure);
  } else {
    callIfSet(handlers.onEnd);
  }
}

DescriptorReader::Handlers DescriptorReader::currentHandlers() {
  const std::lock_guard lock(mutex_);
  return handlers_;
}

/// One read of up to the largest chunk; nothing if the reader was stopped. A read that gives less than was asked for
/// has emptied the pipe, so the next bytes are a change that the loop tells of; but the end of a pipe that is hung up
/// is none.
std::optional<DescriptorReader::Found> DescriptorReader::read(bool hungUp) {
  std::shared_ptr<WatchedDescriptor> kept;
  Handlers released;
  const std::lock_guard lock(mutex_);
  if (!isOpen()) return std::nullopt;
  ByteBuffer buffer = takeChunkBuffer();
  const ssize_t count = readInto(buffer, number());
  Found found;
  if (count > 0) {
    found.mayHaveMore = hungUp || buffer.size() == largestChunk;
    found.chunk = chunkOf(std::move(buffer));
    return found;
  }
  giveBackChunkBuffer(std::move(buffer));
  if (count < 0 && errno == EAGAIN) return found;
  found.isEnd = true;
  released = closeLocked();
  kept = std::move(keepsItself_);
  return found;
}

/// Closes the pipe and moves the handlers out. The caller destroys them after unlocking, because the objects they own
/// may call back.
DescriptorReader::Handlers DescriptorReader::closeLocked() noexcept {
  close();
  return std::move(handlers_);
}

}  // namespace ormel::detail
