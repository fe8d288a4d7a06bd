#include "OrmelSDK/Platform/DescriptorReader.h"

#include <errno.h>
#include <unistd.h>

#include <asio/bind_allocator.hpp>
#include <new>

#include "OrmelSDK/Concurrency/ExecutionState.h"
#include "OrmelSDK/Platform/ChunkBuffers.h"
#include "OrmelSDK/Platform/ReservedMemory.h"
#include "OrmelSDK/Platform/WatchedDescriptor.h"

namespace ormel::detail {

namespace {

/// A chunk that fills less of the buffer than this is copied out, so that a queue of short lines stays small.
constexpr std::size_t worthKeepingWhole = largestChunk / 2;

/// After this many chunks in a row the reader yields to other work of the thread.
constexpr int chunksPerTurn = 16;

/// One read of up to the largest chunk; empty at the end of the stream.
ByteBuffer readChunk(int descriptor) {
  ByteBuffer buffer = takeChunkBuffer();
  ssize_t count = 0;
  do {
    count = ::read(descriptor, buffer.data(), largestChunk);
  } while (count < 0 && errno == EINTR);
  if (count > 0) buffer.commit(static_cast<std::size_t>(count));
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

}  // namespace

DescriptorReader::DescriptorReader(asio::io_context& context, FileDescriptor descriptor)
    : descriptor_(watchedDescriptor(context, std::move(descriptor))) {}

void DescriptorReader::start(PipeReadHandlers handlers) {
  const std::lock_guard lock(mutex_);
  if (!descriptor_.is_open() || handlers_) return;
  handlers_ = std::make_shared<const PipeReadHandlers>(std::move(handlers));
  waitLocked();
}

void DescriptorReader::stop() noexcept {
  Handlers released;
  const std::lock_guard lock(mutex_);
  released = closeLocked();
}

bool DescriptorReader::hasUnreadBytes() const noexcept {
  const std::lock_guard lock(mutex_);
  return descriptor_.is_open() && hasReadableBytes(descriptor_.native_handle());
}

void DescriptorReader::waitLocked() {
  descriptor_.async_wait(
      asio::posix::stream_descriptor::wait_read,
      asio::bind_allocator(ReservedAllocator<void>(),
                           [self = shared_from_this()](const asio::error_code&) { self->readWhatIsThere(); }));
}

void DescriptorReader::readWhatIsThere() {
  const ThreadHandoff leaving;
  for (int chunks = 0; chunks < chunksPerTurn; ++chunks) {
    const auto handlers = handlersIfReadable();
    if (!handlers) return;
    if (handlers->onReadStart) handlers->onReadStart();
    try {
      if (!takeAndDeliver(*handlers)) return;
    } catch (...) {
      return fail(*handlers, std::current_exception());
    }
  }
  const std::lock_guard lock(mutex_);
  if (descriptor_.is_open()) waitLocked();
}

/// Whether there may be more.
bool DescriptorReader::takeAndDeliver(const PipeReadHandlers& handlers) {
  auto chunk = take();
  if (!chunk) return false;
  if (chunk->empty()) {
    if (handlers.onEnd) handlers.onEnd();
    return false;
  }
  if (handlers.onChunk) handlers.onChunk(std::move(*chunk));
  return true;
}

void DescriptorReader::fail(const PipeReadHandlers& handlers, std::exception_ptr failure) {
  stop();
  if (handlers.onFailure) {
    handlers.onFailure(std::move(failure));
  } else if (handlers.onEnd) {
    handlers.onEnd();
  }
}

/// Returns the handlers if a read would find something. Otherwise returns nothing and waits again, unless the reader
/// was stopped: a wait can end spuriously, and an announced read must be followed by a chunk or the end.
DescriptorReader::Handlers DescriptorReader::handlersIfReadable() {
  const std::lock_guard lock(mutex_);
  if (!descriptor_.is_open()) return nullptr;
  if (isReadable(descriptor_.native_handle())) return handlers_;
  waitLocked();
  return nullptr;
}

/// The next chunk, an empty one at the end of the stream, or nothing if the reader was stopped.
std::optional<ByteBuffer> DescriptorReader::take() {
  Handlers released;
  const std::lock_guard lock(mutex_);
  if (!descriptor_.is_open()) return std::nullopt;
  auto chunk = readChunk(descriptor_.native_handle());
  if (chunk.empty()) released = closeLocked();
  return chunk;
}

/// Closes the pipe and moves the handlers out. The caller destroys them after unlocking, because the objects they own
/// may call back.
DescriptorReader::Handlers DescriptorReader::closeLocked() noexcept {
  asio::error_code ignored;
  descriptor_.close(ignored);
  return std::move(handlers_);
}

}  // namespace ormel::detail
