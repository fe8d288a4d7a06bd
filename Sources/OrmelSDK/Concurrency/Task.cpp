#include "OrmelSDK/Concurrency/Task.h"

#include <condition_variable>
#include <mutex>

#include "OrmelSDK/Base/FatalError.h"

namespace ormel::detail {

namespace {

class BlockingCompletion final : public Completion {
 public:
  void completed() noexcept override {
    // Told under the lock, because this object is gone as soon as the waiting thread sees it.
    const std::lock_guard lock(mutex_);
    done_ = true;
    ended_.notify_one();
  }

  void wait() {
    std::unique_lock lock(mutex_);
    ended_.wait(lock, [this] { return done_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable ended_;
  bool done_ = false;
};

Place placeOfStart(const TaskPromiseBase& promise) noexcept {
  return promise.startsElsewhere() ? Place(promise.startStrand.get(), promise.startScheduler) : Place::current();
}

}  // namespace

void keepPlaceBeforeLeaving(TaskPromiseBase& promise) {
  if (!promise.leftStrand) promise.leftStrand = Ref<StrandCore>(executionState().strand);
}

void startAwaited(TaskPromiseBase& promise, std::coroutine_handle<> coroutine, Completion& completion) noexcept {
  promise.completion = &completion;
  placeOfStart(promise).resume(coroutine, completion.startItem);
}

void startAlone(TaskPromiseBase& promise, std::coroutine_handle<> coroutine, Completion& completion) noexcept {
  promise.completion = &completion;
  const Place place = placeOfStart(promise);
  if (place.isHere()) {
    drive(coroutine);
  } else {
    completion.startItem.coroutine = coroutine;
    place.post(completion.startItem);
  }
}

void runAndBlock(TaskPromiseBase& promise, std::coroutine_handle<> coroutine) {
  BlockingCompletion completion;
  startAlone(promise, coroutine, completion);
  completion.wait();
}

void failForSpentTask() noexcept { fatalError("A task was used that is empty or has been started already"); }

}  // namespace ormel::detail
