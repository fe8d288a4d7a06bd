#include "OrmelSDK/Concurrency/Place.h"

namespace ormel::detail {

bool Place::isHere() const noexcept {
  const ExecutionState& state = executionState();
  if (state.strand != strand_) return false;
  if (strand_) return true;
  return scheduler_ ? scheduler_ == state.scheduler : mayRunApplicationCode();
}

void Place::post(WorkItem& item) const noexcept {
  if (strand_) {
    strand_->post(item);
    return;
  }
  if (scheduler_) return scheduler_->post(item);
  Scheduler* const here = executionState().scheduler;
  (here ? here->applicationScheduler() : productionScheduler()).post(item);
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
