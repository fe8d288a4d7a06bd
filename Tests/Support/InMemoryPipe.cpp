#include "Support/InMemoryPipe.h"

#include <utility>

namespace ormel::testing {

void InMemoryPipe::write(std::string_view bytes) {
  if (!isWriteEndOpen_ || !isOpen_) return;
  bytes_ += bytes;
  readIfReadable();
}

void InMemoryPipe::closeWriteEnd() {
  isWriteEndOpen_ = false;
  readIfReadable();
}

void InMemoryPipe::start(detail::PipeReadHandlers handlers) {
  if (!isOpen_ || handlers_) return;
  handlers_ = std::make_shared<const detail::PipeReadHandlers>(std::move(handlers));
  readIfReadable();
}

void InMemoryPipe::stop() noexcept {
  isOpen_ = false;
  bytes_.clear();
  slowRead_.cancel();
  // Let go of last: what they own may call back.
  const Handlers released = std::move(handlers_);
}

void InMemoryPipe::readIfReadable() {
  if (isReading_ || !isOpen_ || !handlers_ || (bytes_.empty() && isWriteEndOpen_)) return;
  isReading_ = true;
  scheduler_.post([self = shared_from_this()] { self->beginRead(); }, "pipe is readable");
}

void InMemoryPipe::beginRead() {
  if (!isOpen_) return;
  const Handlers handlers = handlers_;
  if (handlers->onReadStart) handlers->onReadStart();
  auto read = [self = shared_from_this(), handlers] { self->take(handlers); };
  if (delay_ > delay_.zero()) {
    slowRead_ = scheduler_.postAfter(delay_, std::move(read), "slow read of a pipe");
  } else {
    scheduler_.post(std::move(read), "read of a pipe");
  }
}

void InMemoryPipe::take(const Handlers& handlers) {
  if (!isOpen_) return;
  if (bytes_.empty()) {
    stop();
    auto end = [handlers] {
      if (handlers->onEnd) handlers->onEnd();
    };
    scheduler_.post(std::move(end), "end of a pipe");
    return;
  }
  auto hand = [self = shared_from_this(), handlers, chunk = takeChunk()]() mutable {
    self->deliver(handlers, std::move(chunk));
  };
  scheduler_.post(std::move(hand), "chunk of a pipe");
}

void InMemoryPipe::deliver(const Handlers& handlers, detail::ByteBuffer chunk) {
  if (handlers->onChunk) handlers->onChunk(std::move(chunk));
  isReading_ = false;
  readIfReadable();
}

detail::ByteBuffer InMemoryPipe::takeChunk() {
  const bool takesAll = scheduler_.choose(4) != 0;
  const std::size_t size = takesAll ? bytes_.size() : 1 + scheduler_.choose(bytes_.size());
  detail::ByteBuffer chunk;
  chunk.append(std::string_view(bytes_).substr(0, size));
  bytes_.erase(0, size);
  return chunk;
}

}  // namespace ormel::testing
