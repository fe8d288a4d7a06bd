#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "OrmelSDK/Management/Call.h"
#include "OrmelSDK/Management/CommandParams.h"
#include "OrmelSDK/Records/CommandRecords.h"
#include "OrmelSDK/Records/DeviceRecords.h"
#include "OrmelSDK/Records/EmptyResponses.h"

/// The calls about commands and the environments that they run in, by the names of the operations that perform them.
namespace ormel::detail::calls {

Call<CommandExecResponse> executeCommand(const std::vector<std::string>& command, const ExecuteCommandParams& params);
DroppedCall<EmptyRPCResponse> writeCommandInput(const std::string& processID, const WriteCommandInputParams& params);
DroppedCall<EmptyRPCResponse> resizeCommand(const std::string& processID, std::int64_t rows, std::int64_t columns);
DroppedCall<EmptyRPCResponse> terminateCommand(const std::string& processID);
Call<EnvironmentAddResponse> addEnvironment(const std::string& environmentID, const std::string& execServerURL);
Call<RemoteControlStatusResponse> enableRemoteControl();
Call<RemoteControlStatusResponse> disableRemoteControl();
Call<RemoteControlStatusResponse> readRemoteControlStatus();
Call<WindowsSandboxReadinessResponse> readWindowsSandboxReadiness();
Call<WindowsSandboxSetupStartResponse> startWindowsSandboxSetup(WindowsSandboxSetupMode mode,
                                                                const StartWindowsSandboxSetupParams& params);

}  // namespace ormel::detail::calls
