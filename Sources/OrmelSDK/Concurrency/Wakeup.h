#pragma once

#include <coroutine>

#include "OrmelSDK/Concurrency/Place.h"

namespace ormel::detail {

/// Base of a shared state that one coroutine waits for: resumes the coroutine in the place where it suspended. A wait
/// holds a reference to the state from `prepare` until the coroutine has resumed; `wake` queues the state as a work
/// item.
class Wakeup : public WorkItem, public RefCounted {
 public:
  /// Records the coroutine, which is about to suspend, and its place.
  void prepare(std::coroutine_handle<> coroutine) noexcept;
  /// Undoes `prepare` when no `wake` will come.
  void unprepare() noexcept;
  /// Queues the prepared coroutine. Must be called at most once per `prepare`.
  void wake() noexcept;
  /// The coroutine was destroyed after `wake` and must not be resumed. Call it only in the coroutine's place.
  void forget() noexcept;

  void run() noexcept override;
  void discard() noexcept override { release(); }
  const char* name() const noexcept override { return record_.name(); }

 protected:
  explicit Wakeup(const char* name) noexcept : record_(name) {}
  ~Wakeup() override = default;

 private:
  std::coroutine_handle<> coroutine_;
  Place place_;
  Ref<StrandCore> strand_;
  WaitRecord record_;
};

}  // namespace ormel::detail
