#pragma once

#include <string>
#include <vector>

#include "OrmelSDK/Management/AppParams.h"
#include "OrmelSDK/Management/Call.h"
#include "OrmelSDK/Records/AppRecords.h"
#include "OrmelSDK/Records/EmptyResponses.h"
#include "OrmelSDK/Records/McpServerRecords.h"

/// The calls about apps and MCP servers, by the names of the operations that perform them.
namespace ormel::detail::calls {

Call<AppsListResponse> listApps(const ListAppsParams& params);
Call<AppsInstalledResponse> listInstalledApps(const ListInstalledAppsParams& params);
Call<AppsReadResponse> readApps(const std::vector<std::string>& appIDs, const ReadAppsParams& params);
Call<McpServerStatusListResponse> listMcpServerStatus(const ListMcpServerStatusParams& params);
Call<McpServerOAuthLoginResponse> startMcpServerOAuthLogin(const std::string& name,
                                                           const StartMcpServerOAuthLoginParams& params);
DroppedCall<EmptyRPCResponse> reloadMcpServerConfig();
Call<McpResourceReadResponse> readMcpResource(const std::string& threadID, const std::string& server,
                                              const std::string& uri);
Call<McpServerToolCallResponse> callMcpServerTool(const std::string& threadID, const std::string& server,
                                                  const std::string& tool, const CallMcpServerToolParams& params);

/// The params of the first page of a walk.
ListAppsParams firstPage(const ListAllAppsParams& params);
ListMcpServerStatusParams firstPage(const ListAllMcpServerStatusParams& params);

}  // namespace ormel::detail::calls
