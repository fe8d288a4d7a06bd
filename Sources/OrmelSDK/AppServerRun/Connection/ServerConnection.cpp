#include "OrmelSDK/AppServerRun/Connection/ServerConnection.h"

#include <exception>
#include <utility>

#include "OrmelSDK/AppServerRun/Framing/AppServerRunSupport.h"
#include "OrmelSDK/AppServerRun/Launch/AppServerLaunch.h"
#include "OrmelSDK/AppServerRun/Launch/ExecutableVetting.h"
#include "OrmelSDK/AppServerRun/Launch/FailureCauses.h"
#include "OrmelSDK/Base/OrmelProcessError.h"
#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Platform/ProcessLaunchError.h"

namespace ormel::detail {

namespace {

constexpr const char* processStarter = "/usr/bin/env";

std::unique_ptr<ChildProcess> launchedProcess(ProcessLauncher& launcher, const LaunchSettings& settings,
                                              TerminationHandler onTermination) {
  try {
    return launcher.launch(settings, std::move(onTermination));
  } catch (const std::exception& failure) {
    const auto* const refused = dynamic_cast<const ProcessLaunchError*>(&failure);
    const std::string server = settings.arguments.empty() ? settings.executable : settings.arguments.front();
    throw OrmelProcessError::spawnFailed(
        appServerProtocolErrorDescription(failure),
        FailureCauses(server, {}, OrmelOptions()).ofRefusedLaunch(refused ? refused->errorNumber() : 0));
  }
}

TerminationHandler handlerTelling(std::shared_ptr<TerminationNotice> notice, TerminationHandler onTermination) {
  return [told = std::move(notice), next = std::move(onTermination)](const Termination& termination) {
    told->tell(termination);
    if (next) next(termination);
  };
}

[[noreturn]] void refuseWrite() { throw ThreadRunError::passing("Ormel app-server stdin is unavailable"); }

}  // namespace

Task<void> vetServerExecutable(BlockingWork& blockingWork, std::string executablePath, OrmelOptions ormelOptions) {
  if (!needsVetting(ormelOptions)) {
    requireExactStart(executablePath, ormelOptions);
    co_return;
  }
  UniqueFunction<void()> vetting = [path = std::move(executablePath), options = std::move(ormelOptions)] {
    requireTrustedExecutable(path, options);
  };
  co_await runBlocking(blockingWork, std::move(vetting));
}

LaunchSettings serverLaunchSettings(const std::string& executablePath,
                                    const std::vector<std::string>& ormelPathDirectories,
                                    const OrmelOptions& ormelOptions) {
  LaunchSettings settings;
  settings.executable = processStarter;
  settings.arguments = buildAppServerArguments(executablePath, ormelOptions);
  settings.environment = buildAppServerEnvironment(ormelOptions, ormelPathDirectories);
  return settings;
}

std::unique_ptr<ServerConnection> ServerConnection::launch(ProcessLauncher& launcher, const LaunchSettings& settings,
                                                           std::shared_ptr<AppServerLockedData> stderrAccumulator,
                                                           TerminationHandler onTermination) {
  auto notice = std::make_shared<TerminationNotice>();
  auto process = launchedProcess(launcher, settings, handlerTelling(notice, std::move(onTermination)));
  return std::unique_ptr<ServerConnection>(
      new ServerConnection(std::move(process), std::move(notice), std::move(stderrAccumulator)));
}

ServerConnection::ServerConnection(std::unique_ptr<ChildProcess> process,
                                   std::shared_ptr<TerminationNotice> termination,
                                   std::shared_ptr<AppServerLockedData> stderrAccumulator)
    : process_(std::move(process)),
      termination_(std::move(termination)),
      errorOutput_(std::make_shared<StandardErrorCollector>(std::move(stderrAccumulator))) {
  errorOutput_->start(process_->errorOutput());
}

ServerConnection::~ServerConnection() {
  readerTask_.request_stop();
  process_->terminate();
}

void ServerConnection::end() {
  readerTask_.request_stop();
  closeInput();
  process_->terminate();
}

ServerOutput ServerConnection::read(AppServerOutputChunkCallbacks callbacks) {
  return {appServerOutputChunks(process_->output(), std::move(callbacks)), readerTask_.get_token()};
}

void ServerConnection::write(const JSONValue& payload) {
  if (isInputClosed_) refuseWrite();
  std::string line = payload.encode();
  line += '\n';
  process_->write(std::move(line));
}

void ServerConnection::closeInput() {
  isInputClosed_ = true;
  process_->closeInput();
}

void writePayload(ServerConnection* connection, const JSONValue& payload) {
  if (!connection) refuseWrite();
  connection->write(payload);
}

}  // namespace ormel::detail
