#include "OrmelSDK/Concurrency/Place.h"

namespace ormel::detail {

bool Place::isHere() const noexcept {
  const ExecutionState& state = executionState();
  return state.strand == strand_ && (strand_ || !scheduler_ || scheduler_ == state.scheduler);
}

void Place::post(WorkItem& item) const noexcept {
  if (strand_) {
    strand_->post(item);
    return;
  }
  Scheduler* const scheduler = scheduler_ ? scheduler_ : executionState().scheduler;
  (scheduler ? *scheduler : productionScheduler()).post(item);
}

void Place::resume(std::coroutine_handle<> coroutine, ResumeItem& item) const noexcept {
  if (isHere()) {
    transferTo(coroutine);
  } else {
    item.coroutine = coroutine;
    const ThreadHandoff leaving(isEndOfPiece());
    post(item);
  }
}

}  // namespace ormel::detail
