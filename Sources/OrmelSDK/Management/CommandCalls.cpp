#include "OrmelSDK/Management/CommandCalls.h"

#include "OrmelSDK/Coding/ParamsTable.h"

namespace ormel::detail::calls {

Call<CommandExecResponse> executeCommand(const std::vector<std::string>& command, const ExecuteCommandParams& params) {
  return {"command/exec", callParams({{"command", argument(command)}}, params)};
}

DroppedCall<EmptyRPCResponse> writeCommandInput(const std::string& processID, const WriteCommandInputParams& params) {
  return {{"command/exec/write", callParams({{"processId", processID}}, params)}};
}

DroppedCall<EmptyRPCResponse> resizeCommand(const std::string& processID, std::int64_t rows, std::int64_t columns) {
  CommandExecTerminalSize size;
  size.rows = rows;
  size.cols = columns;
  return {{"command/exec/resize", callParams({{"processId", processID}, {"size", encode(size)}})}};
}

DroppedCall<EmptyRPCResponse> terminateCommand(const std::string& processID) {
  return {{"command/exec/terminate", callParams({{"processId", processID}})}};
}

Call<EnvironmentAddResponse> addEnvironment(const std::string& environmentID, const std::string& execServerURL) {
  return {"environment/add", callParams({{"environmentId", environmentID}, {"execServerUrl", execServerURL}})};
}

Call<RemoteControlStatusResponse> enableRemoteControl() { return {"remoteControl/enable", withoutParams}; }

Call<RemoteControlStatusResponse> disableRemoteControl() { return {"remoteControl/disable", withoutParams}; }

Call<RemoteControlStatusResponse> readRemoteControlStatus() { return {"remoteControl/status/read", withoutParams}; }

Call<WindowsSandboxReadinessResponse> readWindowsSandboxReadiness() {
  return {"windowsSandbox/readiness", withoutParams};
}

Call<WindowsSandboxSetupStartResponse> startWindowsSandboxSetup(WindowsSandboxSetupMode mode,
                                                                const StartWindowsSandboxSetupParams& params) {
  return {"windowsSandbox/setupStart", callParams({{"mode", rawValue(mode)}}, params)};
}

}  // namespace ormel::detail::calls
