#pragma once

#include <chrono>

#include "OrmelSDK/AppServerRun/Connection/ServerServices.h"
#include "OrmelSDK/AppServerRun/RPCClient/AppServerRPCClient.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Diagnosis.h"

namespace ormel::detail {

/// See `Ormel::diagnose`.
Task<Diagnosis> diagnoseSetUp(AppServerRPCClientConfiguration configuration, std::chrono::milliseconds timeout,
                              ServerServices services = ServerServices());

}  // namespace ormel::detail
