#pragma once

#include <atomic>
#include <cstddef>

#include "OrmelSDK/Concurrency/ExecutionState.h"
#include "OrmelSDK/Concurrency/Ref.h"
#include "OrmelSDK/Concurrency/Scheduler.h"

namespace ormel::detail {

/// The run queue behind `Strand`. Any thread pushes onto `incoming_`, a lock-free stack; the push that finds it idle
/// posts the strand to its scheduler. Only the draining thread touches the local queue, which it refills with the
/// reversed stack. A strand that is posted or draining holds a reference to itself.
class StrandCore final : public WorkItem, public RefCounted {
 public:
  StrandCore(Scheduler& scheduler, const char* name) noexcept;

  bool isCurrent() const noexcept { return executionState().strand == this; }
  Scheduler& scheduler() const noexcept { return scheduler_; }

  void post(WorkItem& item) noexcept;

  /// Whether at most one piece is queued behind the running one. Only the running piece may ask.
  bool isNearlyDone() const noexcept {
    return (!localFirst_ || !localFirst_->next) && !incoming_.load(std::memory_order_relaxed);
  }

  /// Runs one batch of pieces; called by the scheduler.
  void run() noexcept override;
  void discard() noexcept override;
  const char* name() const noexcept override { return name_; }

 private:
  ~StrandCore() override = default;

  void postFromOutside(WorkItem& item) noexcept;
  void takeIncoming() noexcept;
  WorkItem* takeNext() noexcept;
  bool becomeIdle() noexcept;

  Scheduler& scheduler_;
  const char* name_;
  std::atomic<WorkItem*> incoming_;
  WorkItem* localFirst_ = nullptr;
  WorkItem* localLast_ = nullptr;
};

}  // namespace ormel::detail
