#include "OrmelSDK/Ormel.h"

#include <utility>

#include "OrmelSDK/AppServerRun/Launch/FailureCauses.h"
#include "OrmelSDK/AppServerRun/Launch/OrmelBinaryLocator.h"
#include "OrmelSDK/Conversation.h"
#include "OrmelSDK/Management/ControlSession.h"
#include "OrmelSDK/Management/OneShotPerformer.h"
#include "OrmelSDK/Options/SharedCallbacks.h"
#include "OrmelSDK/SetUpDiagnosis.h"

namespace ormel {

Ormel::Ormel(OrmelOptions options) {
  auto resolution = detail::OrmelBinaryLocator().resolveOrmelBinary(options.ormelPathOverride);
  detail::AppServerRPCClientConfiguration configuration;
  configuration.executablePath = std::move(resolution.executablePath);
  configuration.ormelPathDirectories = std::move(resolution.pathDirectories);
  configuration.ormelOptions = std::move(options);
  detail::shareCallbacks(configuration.ormelOptions);
  configuration.ormelOptions.selectedOrmelPathOverride = resolution.selectedOverride;
  performer_ = std::make_shared<detail::OneShotPerformer>(std::move(configuration));
}

const std::string& Ormel::executablePath() const noexcept { return performer_->configuration().executablePath; }

const std::vector<std::string>& Ormel::ormelPathDirectories() const noexcept {
  return performer_->configuration().ormelPathDirectories;
}

const OrmelOptions& Ormel::options() const noexcept { return performer_->configuration().ormelOptions; }

std::string Ormel::normalizedCLIPath(const std::string& path) {
  return detail::OrmelBinaryLocator().resolveOrmelBinary(path).executablePath;
}

Thread Ormel::startThread(ThreadOptions options) const { return thread(std::nullopt, std::move(options)); }

Thread Ormel::resumeThread(std::string id, ThreadOptions options) const {
  return thread(std::move(id), std::move(options));
}

Thread Ormel::thread(std::optional<std::string> id, ThreadOptions threadOptions) const {
  detail::AppServerTurnRunConfiguration configuration;
  configuration.executablePath = executablePath();
  configuration.ormelPathDirectories = ormelPathDirectories();
  configuration.ormelOptions = options();
  configuration.threadOptions = std::move(threadOptions);
  return Thread(std::make_shared<detail::Conversation>(std::move(configuration), std::move(id)));
}

OrmelControlSession Ormel::makeControlSession() const {
  return OrmelControlSession(std::make_shared<detail::ControlSession>(performer_->configuration()));
}

std::shared_ptr<const FailureCause> Ormel::searchProblem() const {
  return detail::FailureCauses(executablePath(), ormelPathDirectories(), options()).ofSearch();
}

Task<Diagnosis> Ormel::diagnose(const DiagnosisOptions& options) const {
  return detail::diagnoseSetUp(performer_->configuration(), options.timeout);
}

Task<void> Ormel::performNotification(std::string method, std::optional<JSONValue> params) const {
  return detail::OneShotPerformer::performNotification(performer_, std::move(method), std::move(params));
}

std::shared_ptr<detail::CallPerformer> Ormel::performer() const { return performer_; }

std::shared_ptr<detail::CallPerformer> Ormel::performer(AppServerInitializeCapabilities initializeCapabilities) const {
  if (initializeCapabilities == performer_->configuration().initializeCapabilities) return performer_;
  return performer_->withCapabilities(std::move(initializeCapabilities));
}

}  // namespace ormel
