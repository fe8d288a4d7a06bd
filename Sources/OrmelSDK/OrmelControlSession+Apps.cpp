#include "OrmelSDK/Management/AppCalls.h"
#include "OrmelSDK/Management/ControlSession.h"
#include "OrmelSDK/Management/PageWalk.h"
#include "OrmelSDK/OrmelControlSession.h"

namespace ormel {

namespace calls = detail::calls;

Task<std::vector<AppInfo>> OrmelControlSession::listAllApps(const ListAllAppsParams& params) const {
  return detail::allPages(session_, calls::listApps, calls::firstPage(params));
}

Task<AppsInstalledResponse> OrmelControlSession::listInstalledApps(const ListInstalledAppsParams& params) const {
  return detail::perform(session_, calls::listInstalledApps(params));
}

Task<AppsReadResponse> OrmelControlSession::readApps(const std::vector<std::string>& appIDs,
                                                     const ReadAppsParams& params) const {
  return detail::perform(session_, calls::readApps(appIDs, params));
}

Task<std::vector<McpServerStatusSummary>> OrmelControlSession::listAllMcpServerStatus(
    const ListAllMcpServerStatusParams& params) const {
  return detail::allPages(session_, calls::listMcpServerStatus, calls::firstPage(params));
}

Task<McpServerOAuthLoginResponse> OrmelControlSession::startMcpServerOAuthLogin(
    const std::string& name, const StartMcpServerOAuthLoginParams& params) const {
  return detail::perform(session_, calls::startMcpServerOAuthLogin(name, params));
}

Task<void> OrmelControlSession::reloadMcpServerConfig() const {
  return detail::perform(session_, calls::reloadMcpServerConfig());
}

}  // namespace ormel
