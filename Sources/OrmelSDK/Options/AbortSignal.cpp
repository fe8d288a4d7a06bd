#include "OrmelSDK/Options/AbortSignal.h"

#include <exception>
#include <map>
#include <mutex>
#include <utility>

#include "OrmelSDK/Concurrency/ApplicationObject.h"

namespace ormel {

struct AbortSignal::State {
  std::mutex lock;
  bool aborted = false;
  std::map<UUID, Observer> observers;
};

AbortSignal::AbortSignal() : state_(detail::makeApplicationObject<State>()) {}

bool AbortSignal::isAborted() const {
  const std::lock_guard guard(state_->lock);
  return state_->aborted;
}

UUID AbortSignal::register_(Observer observer) const {
  const UUID token = UUID::random();
  {
    const std::lock_guard guard(state_->lock);
    if (!state_->aborted) {
      state_->observers.emplace(token, std::move(observer));
      return token;
    }
  }
  observer();
  return token;
}

void AbortSignal::unregister(const UUID& token) const {
  // Objects that an observer holds may use the signal when they are destroyed, so that happens outside the lock.
  std::map<UUID, Observer>::node_type removed;
  const std::lock_guard guard(state_->lock);
  removed = state_->observers.extract(token);
}

void AbortSignal::abort() const {
  // An observer may drop the last other handle to the signal.
  const auto state = state_;
  std::map<UUID, Observer> observers;
  {
    const std::lock_guard guard(state->lock);
    if (state->aborted) return;
    state->aborted = true;
    observers.swap(state->observers);
  }
  std::exception_ptr failure;
  for (const auto& [token, observer] : observers) {
    try {
      observer();
    } catch (...) {
      if (!failure) failure = std::current_exception();
    }
  }
  if (failure) std::rethrow_exception(failure);
}

}  // namespace ormel
