#include "OrmelSDK/AppServerRun/Framing/StandardErrorCollector.h"

#include <utility>

#include "OrmelSDK/Text/TrimmedText.h"

namespace ormel::detail {

void StandardErrorCollector::start(const std::shared_ptr<PipeReader>& stderrReadHandle) {
  {
    const std::lock_guard guard(lock_);
    stderrReadHandle_ = stderrReadHandle;
  }
  PipeReadHandlers handlers;
  handlers.onReadStart = [self = shared_from_this()] {
    const std::lock_guard guard(self->lock_);
    ++self->readsInProgress_;
  };
  handlers.onChunk = [self = shared_from_this()](const ByteBuffer& bytes) {
    self->stderrAccumulator_->append(bytes.view());
    self->readEnded(false);
  };
  handlers.onNothing = [self = shared_from_this()] { self->readEnded(false); };
  handlers.onEnd = [self = shared_from_this()] { self->readEnded(true); };
  stderrReadHandle->start(std::move(handlers));
}

std::string StandardErrorCollector::text() const { return std::string(trimmed(stderrAccumulator_->string())); }

Task<void> StandardErrorCollector::settled(std::shared_ptr<StandardErrorCollector> self, Scheduler& scheduler,
                                           std::chrono::nanoseconds limit) {
  const OneShot<void> outcome("end of standard error");
  {
    const std::lock_guard guard(self->lock_);
    if (self->isSettledLocked()) co_return;
    self->waiter_ = outcome.resolver();
  }
  const Timer timer =
      scheduler.postAfter(limit, [resolver = outcome.resolver()] { resolver.resume(); }, "limit for standard error");
  co_await outcome.wait();
}

void StandardErrorCollector::readEnded(bool atEnd) {
  OneShotResolver<void> released;
  {
    const std::lock_guard guard(lock_);
    --readsInProgress_;
    if (atEnd) atEnd_ = true;
    if (isSettledLocked()) released = std::exchange(waiter_, OneShotResolver<void>());
  }
  released.resume();
}

bool StandardErrorCollector::isSettledLocked() const {
  return atEnd_ || (readsInProgress_ == 0 && !stderrReadHandle_->hasUnreadBytes());
}

}  // namespace ormel::detail
