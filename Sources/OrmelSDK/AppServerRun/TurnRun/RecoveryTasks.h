#pragma once

#include <stop_token>

#include "OrmelSDK/Concurrency/Scheduler.h"

namespace ormel::detail {

/// The timed tasks that keep an operation from hanging: one probe of the server's silence, one grace of an interrupt.
///
/// *Thread safety*: none; it belongs to the run's strand.
class RecoveryTasks {
 public:
  /// Each takes the place of its predecessor, which is cancelled.
  void armLivenessProbe(Timer probe);
  void armInterruptGrace(Timer grace) { interruptCompletionTask_ = std::move(grace); }

  /// The probe's wait is over: it has become a task that observes this token.
  std::stop_token beginReconciliation();
  /// Forgets the task without cancelling it.
  void forgetReconciliation() { reconciliation_ = std::stop_source(std::nostopstate); }

  void cancelLivenessProbe();
  void cancelRecoveryTasks();

 private:
  Timer livenessProbeTask_;
  std::stop_source reconciliation_{std::nostopstate};
  Timer interruptCompletionTask_;
};

}  // namespace ormel::detail
