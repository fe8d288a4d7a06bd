#pragma once

#include <coroutine>

#include "OrmelSDK/Concurrency/Place.h"

namespace ormel::detail {

/// The part of a shared state that brings its one waiting coroutine back to where it suspended. A wait owns a reference
/// to the state from `prepare` until the coroutine has gone on; `wake` queues the state as a piece of work.
class Wakeup : public WorkItem, public RefCounted {
 public:
  /// Notes the coroutine, which is about to suspend here.
  void prepare(std::coroutine_handle<> coroutine) noexcept;
  /// Takes back a `prepare` that no `wake` follows.
  void unprepare() noexcept;
  /// Queues the coroutine that was prepared. Once for each `prepare`.
  void wake() noexcept;
  /// The coroutine goes away after `wake`: it will not be resumed. Only called where it would have been resumed.
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
