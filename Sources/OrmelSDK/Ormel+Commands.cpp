#include "OrmelSDK/Management/CommandCalls.h"
#include "OrmelSDK/Management/OneShotPerformer.h"
#include "OrmelSDK/Ormel.h"

namespace ormel {

namespace calls = detail::calls;

Task<CommandExecResponse> Ormel::executeCommand(const std::vector<std::string>& command,
                                                const ExecuteCommandParams& params) const {
  return detail::perform(performer(), calls::executeCommand(command, params));
}

Task<void> Ormel::writeCommandInput(const std::string& processID, const WriteCommandInputParams& params) const {
  return detail::perform(performer(), calls::writeCommandInput(processID, params));
}

Task<void> Ormel::resizeCommand(const std::string& processID, std::int64_t rows, std::int64_t columns) const {
  return detail::perform(performer(), calls::resizeCommand(processID, rows, columns));
}

Task<void> Ormel::terminateCommand(const std::string& processID) const {
  return detail::perform(performer(), calls::terminateCommand(processID));
}

Task<EnvironmentAddResponse> Ormel::addEnvironment(const std::string& environmentID,
                                                   const std::string& execServerURL) const {
  return detail::perform(performer(), calls::addEnvironment(environmentID, execServerURL));
}

Task<RemoteControlStatusResponse> Ormel::enableRemoteControl() const {
  return detail::perform(performer(), calls::enableRemoteControl());
}

Task<RemoteControlStatusResponse> Ormel::disableRemoteControl() const {
  return detail::perform(performer(), calls::disableRemoteControl());
}

Task<RemoteControlStatusResponse> Ormel::readRemoteControlStatus() const {
  return detail::perform(performer(), calls::readRemoteControlStatus());
}

Task<WindowsSandboxReadinessResponse> Ormel::readWindowsSandboxReadiness() const {
  return detail::perform(performer(), calls::readWindowsSandboxReadiness());
}

Task<WindowsSandboxSetupStartResponse> Ormel::startWindowsSandboxSetup(
    WindowsSandboxSetupMode mode, const StartWindowsSandboxSetupParams& params) const {
  return detail::perform(performer(), calls::startWindowsSandboxSetup(mode, params));
}

}  // namespace ormel
