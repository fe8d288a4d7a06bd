#include "OrmelSDK/Concurrency/TimedTask.h"

namespace ormel::detail {

bool TimedWait::decide(Outcome outcome) noexcept {
  auto expected = Outcome::open;
  return outcome_.compare_exchange_strong(expected, outcome, std::memory_order_acq_rel);
}

void TimedWait::taskEnded() noexcept {
  decide(Outcome::ended);
  if (stage_.fetch_or(taskHasEnded, std::memory_order_acq_rel) & timerIsArmed) disarm();
  if (checkOut()) resume();
}

bool TimedWait::hasToWait() noexcept {
  if (!(stage_.load(std::memory_order_acquire) & taskHasEnded)) {
    try {
      arm();
    } catch (...) {
      failureToArm_ = std::current_exception();
      requestStop();
    }
  }
  return !checkOut();
}

void TimedWait::arm() {
  scheduler_ = place().scheduler() ? place().scheduler() : &productionScheduler();
  scheduler_->prepare();
  checkIn();
  try {
    scheduler_->arm(*this, deadlineAfter(scheduler_->now(), duration_));
  } catch (...) {
    checkOut();
    throw;
  }
  if (stage_.fetch_or(timerIsArmed, std::memory_order_acq_rel) & taskHasEnded) disarm();
}

void TimedWait::disarm() noexcept {
  // The caller is a party itself, so the timer is not the last one.
  if (scheduler_->disarm(*this)) checkOut();
}

void TimedWait::stopRequested() noexcept {
  decide(Outcome::cancelled);
  requestStop();
}

void TimedWait::fallDue() noexcept { scheduler_->post(*this); }

void TimedWait::run() noexcept {
  if (decide(Outcome::timedOut)) requestStop();
  if (checkOut()) resume();
}

void TimedWait::requireInTime() const {
  if (failureToArm_) std::rethrow_exception(failureToArm_);
  if (outcome_.load(std::memory_order_relaxed) == Outcome::timedOut) throw TimeoutError(duration_);
}

}  // namespace ormel::detail
