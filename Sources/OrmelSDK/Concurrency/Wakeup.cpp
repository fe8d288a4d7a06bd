#include "OrmelSDK/Concurrency/Wakeup.h"

#include <utility>

namespace ormel::detail {

void Wakeup::prepare(std::coroutine_handle<> coroutine) noexcept {
  retain();
  coroutine_ = coroutine;
  place_ = Place::current();
  strand_ = place_.strand();
  if (Scheduler* scheduler = place_.scheduler()) {
    if (WaitRegistry* registry = scheduler->waitRegistry()) registry->add(record_);
  }
}

void Wakeup::unprepare() noexcept {
  record_.leave();
  strand_ = {};
  release();
}

void Wakeup::wake() noexcept {
  record_.leave();
  place_.post(*this);
}

void Wakeup::forget() noexcept { coroutine_ = nullptr; }

void Wakeup::run() noexcept {
  strand_ = {};
  if (const auto coroutine = std::exchange(coroutine_, nullptr)) drivePiece(coroutine);
  release();
}

}  // namespace ormel::detail
