#include "OrmelSDK/Concurrency/TaskGroup.h"

#include <cstddef>
#include <mutex>
#include <optional>

#include "OrmelSDK/Concurrency/OneShot.h"

namespace ormel {

namespace detail {

class TaskGroupState {
 public:
  std::stop_source stop;

  void begin() {
    const std::lock_guard lock(mutex_);
    ++running_;
  }

  void end() noexcept {
    OneShotResolver<void> joined;
    {
      const std::lock_guard lock(mutex_);
      if (--running_ == 0) std::swap(joined, joined_);
    }
    joined.resume();
  }

  /// Completes the resolver when no task runs any more, which may be at once.
  void notifyAtEnd(OneShotResolver<void> resolver) {
    {
      const std::lock_guard lock(mutex_);
      if (running_ > 0) std::swap(joined_, resolver);
      if (running_ > 0) return;
    }
    resolver.resume();
  }

 private:
  std::mutex mutex_;
  std::size_t running_ = 0;
  OneShotResolver<void> joined_;
};

void taskOfGroupBegins(TaskGroupState& state) { state.begin(); }
void taskOfGroupEnded(TaskGroupState& state) noexcept { state.end(); }
std::stop_token stopTokenOfGroup(const TaskGroupState& state) { return state.stop.get_token(); }

}  // namespace detail

namespace {

Task<void> joinGroup(std::shared_ptr<detail::TaskGroupState> state) {
  const OneShot<void> joined("task group");
  state->notifyAtEnd(joined.resolver());
  co_await joined.wait();
}

}  // namespace

TaskGroup::TaskGroup() : state_(std::make_shared<detail::TaskGroupState>()) {}
TaskGroup::TaskGroup(TaskGroup&&) noexcept = default;
TaskGroup::~TaskGroup() { cancel(); }

TaskGroup& TaskGroup::operator=(TaskGroup&& other) noexcept {
  if (this != &other) {
    cancel();
    state_ = std::move(other.state_);
  }
  return *this;
}

void TaskGroup::cancel() noexcept {
  if (state_) state_->stop.request_stop();
}

Task<void> TaskGroup::join() const { return joinGroup(state_); }

}  // namespace ormel
