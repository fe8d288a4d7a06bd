#include "OrmelSDK/AppServerRun/TurnRun/RunConfiguration.h"

#include "OrmelSDK/Platform/SystemProcessLauncher.h"

namespace ormel::detail {

RunServices::RunServices()
    : RunServices(productionScheduler(), SystemProcessLauncher::shared(), BlockingWork::onThreads()) {}

}  // namespace ormel::detail
