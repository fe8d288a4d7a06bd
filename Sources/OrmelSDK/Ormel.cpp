#include "OrmelSDK/Ormel.h"

#include <utility>

#include "OrmelSDK/AppServerRun/Launch/OrmelBinaryLocator.h"
#include "OrmelSDK/Conversation.h"

namespace ormel {

Ormel::Ormel(OrmelOptions options) : options_(std::move(options)) {
  auto resolution = detail::OrmelBinaryLocator().resolveOrmelBinary(options_.ormelPathOverride);
  executablePath_ = std::move(resolution.executablePath);
  ormelPathDirectories_ = std::move(resolution.pathDirectories);
  options_.selectedOrmelPathOverride = resolution.selectedOverride;
}

std::string Ormel::normalizedCLIPath(const std::string& path) {
  return detail::OrmelBinaryLocator().resolveOrmelBinary(path).executablePath;
}

Thread Ormel::startThread(ThreadOptions options) const { return thread(std::nullopt, std::move(options)); }

Thread Ormel::resumeThread(std::string id, ThreadOptions options) const {
  return thread(std::move(id), std::move(options));
}

Thread Ormel::thread(std::optional<std::string> id, ThreadOptions options) const {
  detail::AppServerTurnRunConfiguration configuration;
  configuration.executablePath = executablePath_;
  configuration.ormelPathDirectories = ormelPathDirectories_;
  configuration.ormelOptions = options_;
  configuration.threadOptions = std::move(options);
  return Thread(std::make_shared<detail::Conversation>(std::move(configuration), std::move(id)));
}

}  // namespace ormel
