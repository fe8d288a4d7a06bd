#include "OrmelSDK/AppServerRun/TurnRun/RecoveryTasks.h"

#include <utility>

namespace ormel::detail {

void RecoveryTasks::armLivenessProbe(Timer probe) {
  cancelLivenessProbe();
  livenessProbeTask_ = std::move(probe);
}

std::stop_token RecoveryTasks::beginReconciliation() {
  reconciliation_ = std::stop_source();
  return reconciliation_.get_token();
}

void RecoveryTasks::cancelLivenessProbe() {
  livenessProbeTask_.cancel();
  std::exchange(reconciliation_, std::stop_source(std::nostopstate)).request_stop();
}

void RecoveryTasks::cancelRecoveryTasks() {
  interruptCompletionTask_.cancel();
  cancelLivenessProbe();
}

}  // namespace ormel::detail
