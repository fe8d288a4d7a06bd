#include "OrmelSDK/AppServerRun/Framing/AppServerOutputChunks.h"

#include <utility>

namespace ormel::detail {

namespace {

void callIfSet(const std::function<void()>& callback) {
  if (callback) callback();
}

}  // namespace

EventChannel<ByteBuffer> appServerOutputChunks(const std::shared_ptr<PipeReader>& from,
                                               AppServerOutputChunkCallbacks callbacks) {
  auto [producer, chunks] = EventChannel<ByteBuffer>::make(ChannelLimit::unbounded(), "output chunk");
  // The reader is held weakly: it holds the handlers, and with them the producer, until it has ended.
  producer.onTermination([reader = std::weak_ptr(from)](ChannelTermination) {
    if (const auto held = reader.lock()) held->stop();
  });
  PipeReadHandlers handlers;
  handlers.onReadStart = std::move(callbacks.onReadStart);
  handlers.onNothing = std::move(callbacks.onNothing);
  handlers.onChunk = [events = producer, onChunkEnqueued = std::move(callbacks.onChunkEnqueued)](ByteBuffer bytes) {
    callIfSet(onChunkEnqueued);
    events.yield(std::move(bytes));
  };
  handlers.onEnd = [events = producer, onEOF = callbacks.onEOF] {
    callIfSet(onEOF);
    events.finish();
  };
  handlers.onFailure = [events = producer, onEOF = std::move(callbacks.onEOF)](std::exception_ptr failure) {
    callIfSet(onEOF);
    events.fail(std::move(failure));
  };
  from->start(std::move(handlers));
  return std::move(chunks);
}

}  // namespace ormel::detail
