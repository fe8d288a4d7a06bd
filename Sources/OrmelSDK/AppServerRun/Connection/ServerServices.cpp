#include "OrmelSDK/AppServerRun/Connection/ServerServices.h"

#include "OrmelSDK/Platform/IORuntime.h"
#include "OrmelSDK/Platform/SystemProcessLauncher.h"

namespace ormel::detail {

ServerServices::ServerServices()
    : ServerServices(ioScheduler(), SystemProcessLauncher::shared(), BlockingWork::onThreads()) {}

}  // namespace ormel::detail
