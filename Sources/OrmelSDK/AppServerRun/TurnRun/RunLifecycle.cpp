#include "OrmelSDK/AppServerRun/TurnRun/RunLifecycle.h"

#include "OrmelSDK/AppServerRun/TurnRun/CoordinatorScope.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunItems.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunRecovery.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunRequests.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunServerRequests.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunStream.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunTransport.h"

namespace ormel::detail {

std::uint64_t RunLifecycle::reserve() {
  parts_.stream.requireNoOperation();
  prepareForNextTurn();
  return parts_.stream.begin();
}

std::uint64_t RunLifecycle::admit(std::optional<std::uint64_t> preparedOperationGeneration) {
  if (!preparedOperationGeneration) return reserve();
  parts_.stream.requireCurrent(*preparedOperationGeneration);
  return *preparedOperationGeneration;
}

void RunLifecycle::prepareForNextTurn() {
  parts_.recovery.prepareForNextTurn();
  parts_.stream.prepareForNextTurn();
  parts_.items.prepareForNextTurn();
  parts_.serverRequests.prepareForNextTurn();
  parts_.scope.prepareForNextTurn();
}

void RunLifecycle::finishStreamState(const StreamCompletion& with,
                                     std::optional<std::uint64_t> finishedOperationGeneration) {
  if (!parts_.stream.isPending()) return;
  parts_.recovery.cancelRecoveryTasks();
  parts_.stream.finish(with, finishedOperationGeneration);
  parts_.requests.release(with);
  parts_.scope.operationDidEnd();
  parts_.serverRequests.operationDidEnd();
  if (with.kind() == StreamCompletion::Kind::failed) shutdownProcess();
}

void RunLifecycle::finishCurrent(const StreamCompletion& with) {
  finishStreamState(with, parts_.stream.currentOperationGeneration());
}

void RunLifecycle::finishIfCurrent(std::uint64_t operationGeneration, const StreamCompletion& with) {
  if (parts_.stream.isCurrent(operationGeneration)) finishStreamState(with, operationGeneration);
}

void RunLifecycle::shutdownProcess() {
  parts_.recovery.cancelRecoveryTasks();
  parts_.serverRequests.cancelAllPendingServerRequestTasks();
  parts_.transport.shutdown();
  parts_.scope.processDidEnd();
}

}  // namespace ormel::detail
