#include "OrmelSDK/AppServerRun/Connection/TerminationNotice.h"

#include <cstdint>
#include <utility>

namespace ormel::detail {

void TerminationNotice::tell(const Termination& termination) {
  OneShotResolver<void> released;
  {
    const std::lock_guard guard(lock_);
    termination_ = termination;
    released = std::exchange(waiter_, OneShotResolver<void>());
  }
  released.resume();
}

std::optional<Termination> TerminationNotice::termination() const {
  const std::lock_guard guard(lock_);
  return termination_;
}

Task<void> TerminationNotice::awaited(std::shared_ptr<TerminationNotice> self, Scheduler& scheduler,
                                      std::chrono::nanoseconds limit) {
  const OneShot<void> outcome("end of the process");
  {
    const std::lock_guard guard(self->lock_);
    if (self->termination_) co_return;
    self->waiter_ = outcome.resolver();
  }
  const Timer timer =
      scheduler.postAfter(limit, [resolver = outcome.resolver()] { resolver.resume(); }, "limit for the end");
  co_await outcome.wait();
}

Task<void> lastWordsAndEnd(std::shared_ptr<StandardErrorCollector> errorOutput,
                           std::shared_ptr<TerminationNotice> termination, Scheduler& scheduler,
                           std::chrono::nanoseconds limit) {
  const std::uint64_t start = scheduler.now();
  co_await StandardErrorCollector::settled(std::move(errorOutput), scheduler, limit);
  const std::chrono::nanoseconds left = limit - std::chrono::nanoseconds(scheduler.now() - start);
  if (left.count() > 0) co_await TerminationNotice::awaited(std::move(termination), scheduler, left);
}

}  // namespace ormel::detail
