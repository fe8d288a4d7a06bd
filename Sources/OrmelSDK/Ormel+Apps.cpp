#include "OrmelSDK/Management/AppCalls.h"
#include "OrmelSDK/Management/OneShotPerformer.h"
#include "OrmelSDK/Ormel.h"

namespace ormel {

namespace calls = detail::calls;

Task<AppsListResponse> Ormel::listApps(const ListAppsParams& params) const {
  return detail::perform(performer(), calls::listApps(params));
}

Task<AppsInstalledResponse> Ormel::listInstalledApps(const ListInstalledAppsParams& params) const {
  return detail::perform(performer(), calls::listInstalledApps(params));
}

Task<AppsReadResponse> Ormel::readApps(const std::vector<std::string>& appIDs, const ReadAppsParams& params) const {
  return detail::perform(performer(), calls::readApps(appIDs, params));
}

Task<McpServerStatusListResponse> Ormel::listMcpServerStatus(const ListMcpServerStatusParams& params) const {
  return detail::perform(performer(), calls::listMcpServerStatus(params));
}

Task<McpServerOAuthLoginResponse> Ormel::startMcpServerOAuthLogin(const std::string& name,
                                                                  const StartMcpServerOAuthLoginParams& params) const {
  return detail::perform(performer(), calls::startMcpServerOAuthLogin(name, params));
}

Task<void> Ormel::reloadMcpServerConfig() const { return detail::perform(performer(), calls::reloadMcpServerConfig()); }

Task<McpResourceReadResponse> Ormel::readMcpResource(const std::string& threadID, const std::string& server,
                                                     const std::string& uri) const {
  return detail::perform(performer(), calls::readMcpResource(threadID, server, uri));
}

Task<McpServerToolCallResponse> Ormel::callMcpServerTool(const std::string& threadID, const std::string& server,
                                                         const std::string& tool,
                                                         const CallMcpServerToolParams& params) const {
  return detail::perform(performer(), calls::callMcpServerTool(threadID, server, tool, params));
}

}  // namespace ormel
