#include "OrmelSDK/AppServerRun/TurnRun/RunRecovery.h"

#include <utility>

namespace ormel::detail {

void RunRecovery::armLivenessProbe(Timer timer) {
  cancelLivenessProbe();
  livenessProbe_ = std::move(timer);
}

std::stop_token RunRecovery::beginReconciliation() {
  reconciliation_ = std::stop_source();
  return reconciliation_.get_token();
}

void RunRecovery::cancelLivenessProbe() {
  livenessProbe_.cancel();
  std::exchange(reconciliation_, std::stop_source(std::nostopstate)).request_stop();
}

void RunRecovery::cancel() {
  interruptGrace_.cancel();
  cancelLivenessProbe();
}

}  // namespace ormel::detail
