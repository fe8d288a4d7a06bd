#include "OrmelSDK/Concurrency/Task.h"

#include <condition_variable>
#include <mutex>
#include <new>
#include <string>

#include "OrmelSDK/Base/FatalError.h"
#include "OrmelSDK/Concurrency/OutOfMemory.h"

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
  if (!promise.startsElsewhere()) return Place::current();
  StrandCore* const strand = promise.startStrand.get();
  return Place(strand, strand ? &strand->scheduler() : promise.startScheduler);
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

void prepareStart(const TaskPromiseBase& promise) {
  Scheduler* const scheduler = placeOfStart(promise).scheduler();
  (scheduler ? *scheduler : productionScheduler()).prepare();
}

std::exception_ptr failureToStart(const TaskPromiseBase& promise) noexcept {
  try {
    prepareStart(promise);
    return nullptr;
  } catch (...) {
    return std::current_exception();
  }
}

void requireCancelled(const std::exception_ptr& error) noexcept {
  std::string reason;
  try {
    std::rethrow_exception(error);
  } catch (const CancelledError&) {
    return;
  } catch (const std::bad_alloc&) {
    failForMemory("a detached task");
  } catch (const std::exception& failure) {
    reason = failure.what();
  } catch (...) {
    reason = "an exception that is no std::exception";
  }
  fatalError("A detached task failed: " + reason);
}

void failForSpentTask() noexcept { fatalError("A task was used that is empty or has been started already"); }

}  // namespace ormel::detail
