#include "OrmelSDK/Management/AppCalls.h"

#include "OrmelSDK/Coding/ParamsTable.h"

namespace ormel::detail::calls {

Call<AppsListResponse> listApps(const ListAppsParams& params) { return {"app/list", coding::encodeParams(params)}; }

Call<AppsInstalledResponse> listInstalledApps(const ListInstalledAppsParams& params) {
  return {"app/installed", coding::encodeParams(params)};
}

Call<AppsReadResponse> readApps(const std::vector<std::string>& appIDs, const ReadAppsParams& params) {
  return {"app/read", callParams({{"appIds", argument(appIDs)}}, params)};
}

Call<McpServerStatusListResponse> listMcpServerStatus(const ListMcpServerStatusParams& params) {
  return {"mcpServerStatus/list", coding::encodeParams(params)};
}

Call<McpServerOAuthLoginResponse> startMcpServerOAuthLogin(const std::string& name,
                                                           const StartMcpServerOAuthLoginParams& params) {
  return {"mcpServer/oauth/login", callParams({{"name", name}}, params)};
}

DroppedCall<EmptyRPCResponse> reloadMcpServerConfig() { return {{"config/mcpServer/reload", withoutParams}}; }

Call<McpResourceReadResponse> readMcpResource(const std::string& threadID, const std::string& server,
                                              const std::string& uri) {
  return {"mcpServer/resource/read", callParams({{"threadId", threadID}, {"server", server}, {"uri", uri}})};
}

Call<McpServerToolCallResponse> callMcpServerTool(const std::string& threadID, const std::string& server,
                                                  const std::string& tool, const CallMcpServerToolParams& params) {
  return {"mcpServer/tool/call", callParams({{"threadId", threadID}, {"server", server}, {"tool", tool}}, params)};
}

ListAppsParams firstPage(const ListAllAppsParams& params) {
  ListAppsParams page;
  page.threadID = params.threadID;
  page.limit = params.limit;
  page.forceRefetch = params.forceRefetch;
  return page;
}

ListMcpServerStatusParams firstPage(const ListAllMcpServerStatusParams& params) {
  ListMcpServerStatusParams page;
  page.threadID = params.threadID;
  page.detail = params.detail;
  page.limit = params.limit;
  return page;
}

}  // namespace ormel::detail::calls
