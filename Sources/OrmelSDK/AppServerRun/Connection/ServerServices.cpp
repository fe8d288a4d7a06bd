#include "OrmelSDK/AppServerRun/Connection/ServerServices.h"

#include "OrmelSDK/Platform/SystemProcessLauncher.h"

namespace ormel::detail {

ServerServices::ServerServices()
    : ServerServices(productionScheduler(), SystemProcessLauncher::shared(), BlockingWork::onThreads()) {}

}  // namespace ormel::detail
