#pragma once

#include <coroutine>

#include "OrmelSDK/Concurrency/StrandCore.h"
#include "OrmelSDK/Concurrency/WaitRegistry.h"

namespace ormel::detail {

/// An item that resumes a coroutine; it lives in the coroutine's frame.
class ResumeItem final : public WorkItem {
 public:
  std::coroutine_handle<> coroutine;

  void run() noexcept override { drivePiece(coroutine); }
  void discard() noexcept override {}
  const char* name() const noexcept override { return "coroutine"; }
};

/// Where a coroutine resumes after a suspension: on the strand it was on, or else as a piece of its scheduler. With
/// neither, it is code of the application: it resumes on the thread that completes the awaited operation if that may
/// run such code, else as a piece of the application's scheduler; never on a strand.
///
/// A place does not keep its strand alive. While a coroutine is suspended, either its strand is running the piece that
/// the coroutine awaits, or the task or wakeup that left the strand holds a reference to it.
class Place {
 public:
  static Place current() noexcept {
    const ExecutionState& state = executionState();
    return Place(state.strand, state.strand ? &state.strand->scheduler() : state.scheduler);
  }
  Place() noexcept = default;
  Place(StrandCore* strand, Scheduler* scheduler) noexcept : strand_(strand), scheduler_(scheduler) {}

  Ref<StrandCore> strand() const noexcept { return Ref<StrandCore>(strand_); }
  Scheduler* scheduler() const noexcept { return scheduler_; }

  /// Whether the calling thread is running a piece of this place.
  bool isHere() const noexcept;
  void post(WorkItem& item) const noexcept;
  /// Resumes the coroutine: if the calling thread is in this place, as soon as the calling coroutine returns; otherwise
  /// by posting `item`.
  void resume(std::coroutine_handle<> coroutine, ResumeItem& item) const noexcept;

 private:
  StrandCore* strand_ = nullptr;
  Scheduler* scheduler_ = nullptr;
};

}  // namespace ormel::detail
