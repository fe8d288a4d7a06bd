#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "OrmelSDK/Management/AppParams.h"
#include "OrmelSDK/Records/AppRecords.h"
#include "OrmelSDK/Records/EmptyResponses.h"
#include "OrmelSDK/Records/McpServerRecords.h"
#include "Support/CallRows.h"

namespace {

using namespace ormel;
using namespace ormel::testing;

constexpr const char* noApps = R"({"data":[]})";

#define ORMEL_SMALL_APP_READ R"({"id":"a","name":"A","isAccessible":false,"isEnabled":false,"pluginDisplayNames":[]})"
#define ORMEL_WHOLE_APP                                                                                 \
  R"({"id":"b","name":"B","description":"d","logoUrl":"https://l","logoUrlDark":"https://m",)"          \
  R"("iconAssets":{"s":"https://s"},"iconDarkAssets":{"s":"https://t"},"distributionChannel":"store",)" \
  R"("branding":{"x":[1]},"appMetadata":{"y":null},"labels":{"k":"v"},"installUrl":"https://i",)"       \
  R"("isAccessible":true,"isEnabled":true,"pluginDisplayNames":["P"]})"

constexpr const char* twoApps = R"({"data":[{"id":"a","name":"A"},)" ORMEL_WHOLE_APP "]}";
constexpr const char* twoAppsRead = "[" ORMEL_SMALL_APP_READ "," ORMEL_WHOLE_APP "]";
constexpr const char* pageOfApps = R"({"data":[{"id":"a","name":"A"},)" ORMEL_WHOLE_APP R"(],"nextCursor":"n"})";
constexpr const char* pageOfAppsRead = R"({"data":[)" ORMEL_SMALL_APP_READ "," ORMEL_WHOLE_APP R"(],"nextCursor":"n"})";

#define ORMEL_MCP_SERVERS                                                                               \
  R"([{"name":"a","tools":{},"resources":[],"resourceTemplates":[],"authStatus":"oAuth"},{"name":"b",)" \
  R"("runtimeStatus":"authenticationRequired","pluginId":"p","serverInfo":{"name":"B"},"tools":{"t":)"  \
  R"({"name":"t","inputSchema":{}},"u":null},"resources":[{"uri":"u"},1],"resourceTemplates":[null],)"  \
  R"("authStatus":"futureStatus"}])"

constexpr const char* mcpServers = R"({"data":)" ORMEL_MCP_SERVERS "}";
constexpr const char* mcpServersRead = ORMEL_MCP_SERVERS;
constexpr const char* pageOfMcpServers = R"({"data":)" ORMEL_MCP_SERVERS R"(,"nextCursor":"n"})";
constexpr const char* anAuthorization = R"({"authorizationUrl":"https://a"})";
constexpr const char* aToolResult = R"({"content":[]})";

const ReplyRecords appRecords = {
    {"app/list", "AppsListResponse"},
    {"app/installed", "AppsInstalledResponse"},
    {"app/read", "AppsReadResponse"},
    {"mcpServerStatus/list", "McpServerStatusListResponse"},
    {"mcpServer/oauth/login", "McpServerOAuthLoginResponse"},
    {"config/mcpServer/reload", "EmptyRPCResponse"},
    {"mcpServer/resource/read", "McpResourceReadResponse"},
    {"mcpServer/tool/call", "McpServerToolCallResponse"},
};

const CallRow appRows[] = {
    onOrmel(R"({"id":2,"method":"app/list","params":{}})", noApps, [](const Ormel& ormel) { return ormel.listApps(); }),
    onOrmel(R"({"id":2,"method":"app/list","params":{"cursor":"c","limit":7,"threadId":"t1","forceRefetch":true}})",
            pageOfApps, pageOfAppsRead,
            [](const Ormel& ormel) {
              ListAppsParams params;
              params.cursor = "c";
              params.limit = 7;
              params.threadID = "t1";
              params.forceRefetch = true;
              return ormel.listApps(params);
            }),
    onOrmel(R"({"id":2,"method":"app/list","params":{"cursor":"","limit":0,"threadId":"","forceRefetch":false}})",
            noApps,
            [](const Ormel& ormel) {
              ListAppsParams params;
              params.cursor = "";
              params.limit = 0;
              params.threadID = "";
              params.forceRefetch = false;
              return ormel.listApps(params);
            }),
    onSession(R"({"id":2,"method":"app/list","params":{}})", twoApps, twoAppsRead,
              [](const OrmelControlSession& session) { return session.listAllApps(); }),
    onSession(R"({"id":2,"method":"app/list","params":{"limit":7,"threadId":"t1","forceRefetch":true}})", noApps, "[]",
              [](const OrmelControlSession& session) {
                ListAllAppsParams params;
                params.threadID = "t1";
                params.limit = 7;
                params.forceRefetch = true;
                return session.listAllApps(params);
              }),
    onSession(R"({"id":2,"method":"app/list","params":{"limit":0,"threadId":"","forceRefetch":false}})", noApps, "[]",
              [](const OrmelControlSession& session) {
                ListAllAppsParams params;
                params.threadID = "";
                params.limit = 0;
                params.forceRefetch = false;
                return session.listAllApps(params);
              }),
    onBoth(R"({"id":2,"method":"app/installed","params":{}})", R"({"apps":[]})",
           [](const auto& object) { return object.listInstalledApps(); }),
    onBoth(R"({"id":2,"method":"app/installed","params":{"threadId":"t1","forceRefresh":true}})",
           R"({"apps":[{"id":"a","enabled":false,"callable":true},{"id":"b","runtimeName":"r","enabled":true,)"
           R"("callable":false}]})",
           [](const auto& object) {
             ListInstalledAppsParams params;
             params.threadID = "t1";
             params.forceRefresh = true;
             return object.listInstalledApps(params);
           }),
    onBoth(R"({"id":2,"method":"app/installed","params":{"threadId":""}})", R"({"apps":[]})",
           [](const auto& object) {
             ListInstalledAppsParams params;
             params.threadID = "";
             return object.listInstalledApps(params);
           }),
    onBoth(R"({"id":2,"method":"app/read","params":{"appIds":[]}})", R"({"apps":[],"missingAppIds":[]})",
           [](const auto& object) { return object.readApps({}); }),
    onBoth(R"({"id":2,"method":"app/read","params":{"appIds":["a","b"],"threadId":"t1","includeTools":true}})",
           R"({"apps":[{"id":"a","name":"A"},{"id":"b","name":"B","description":"d","iconUrl":"https://i",)"
           R"("iconUrlDark":"https://j","distributionChannel":"store","installUrl":"https://k",)"
           R"("pluginDisplayNames":["P"],"toolSummaries":[{"name":"t","description":"d"},{"name":"u","title":"U",)"
           R"("description":"","isEnabled":false,"disabledReason":"r","isReadOnly":true}]}],"missingAppIds":["c"]})",
           R"({"apps":[{"id":"a","name":"A","pluginDisplayNames":[]},{"id":"b","name":"B","description":"d",)"
           R"("iconUrl":"https://i","iconUrlDark":"https://j","distributionChannel":"store",)"
           R"("installUrl":"https://k","pluginDisplayNames":["P"],"toolSummaries":[{"name":"t","description":"d",)"
           R"("isEnabled":true,"isReadOnly":false},{"name":"u","title":"U","description":"","isEnabled":false,)"
           R"("disabledReason":"r","isReadOnly":true}]}],"missingAppIds":["c"]})",
           [](const auto& object) {
             ReadAppsParams params;
             params.threadID = "t1";
             params.includeTools = true;
             return object.readApps({"a", "b"}, params);
           }),
    onBoth(R"({"id":2,"method":"app/read","params":{"appIds":[""],"threadId":""}})",
           R"({"apps":[],"missingAppIds":[""]})",
           [](const auto& object) {
             ReadAppsParams params;
             params.threadID = "";
             return object.readApps({""}, params);
           }),

    onOrmel(R"({"id":2,"method":"mcpServerStatus/list","params":{}})", noApps,
            [](const Ormel& ormel) { return ormel.listMcpServerStatus(); }),
    onOrmel(R"({"id":2,"method":"mcpServerStatus/list","params":{"cursor":"c","limit":7,"detail":"full",)"
            R"("threadId":"t1"}})",
            pageOfMcpServers,
            [](const Ormel& ormel) {
              ListMcpServerStatusParams params;
              params.cursor = "c";
              params.limit = 7;
              params.detail = McpServerStatusDetail::full;
              params.threadID = "t1";
              return ormel.listMcpServerStatus(params);
            }),
    onOrmel(R"({"id":2,"method":"mcpServerStatus/list","params":{"cursor":"","limit":0,"detail":"toolsAndAuthOnly",)"
            R"("threadId":""}})",
            noApps,
            [](const Ormel& ormel) {
              ListMcpServerStatusParams params;
              params.cursor = "";
              params.limit = 0;
              params.detail = McpServerStatusDetail::toolsAndAuthOnly;
              params.threadID = "";
              return ormel.listMcpServerStatus(params);
            }),
    onSession(R"({"id":2,"method":"mcpServerStatus/list","params":{}})", mcpServers, mcpServersRead,
              [](const OrmelControlSession& session) { return session.listAllMcpServerStatus(); }),
    onSession(R"({"id":2,"method":"mcpServerStatus/list","params":{"limit":7,"detail":"toolsAndAuthOnly",)"
              R"("threadId":"t1"}})",
              noApps, "[]",
              [](const OrmelControlSession& session) {
                ListAllMcpServerStatusParams params;
                params.threadID = "t1";
                params.detail = McpServerStatusDetail::toolsAndAuthOnly;
                params.limit = 7;
                return session.listAllMcpServerStatus(params);
              }),
    onSession(R"({"id":2,"method":"mcpServerStatus/list","params":{"limit":0,"detail":"full","threadId":""}})", noApps,
              "[]",
              [](const OrmelControlSession& session) {
                ListAllMcpServerStatusParams params;
                params.threadID = "";
                params.detail = McpServerStatusDetail::full;
                params.limit = 0;
                return session.listAllMcpServerStatus(params);
              }),
    onBoth(R"({"id":2,"method":"mcpServer/oauth/login","params":{"name":"s"}})", anAuthorization,
           [](const auto& object) { return object.startMcpServerOAuthLogin("s"); }),
    onBoth(R"({"id":2,"method":"mcpServer/oauth/login","params":{"name":"s","threadId":"t1","scopes":["a","b"],)"
           R"("timeoutSecs":3000000000}})",
           anAuthorization,
           [](const auto& object) {
             StartMcpServerOAuthLoginParams params;
             params.threadID = "t1";
             params.scopes = {"a", "b"};
             params.timeoutSeconds = 3'000'000'000;
             return object.startMcpServerOAuthLogin("s", params);
           }),
    onBoth(R"({"id":2,"method":"mcpServer/oauth/login","params":{"name":"","threadId":"","scopes":[],)"
           R"("timeoutSecs":-1}})",
           anAuthorization,
           [](const auto& object) {
             StartMcpServerOAuthLoginParams params;
             params.threadID = "";
             params.scopes.emplace();
             params.timeoutSeconds = -1;
             return object.startMcpServerOAuthLogin("", params);
           }),
    onBoth(R"({"id":2,"method":"config/mcpServer/reload"})", R"({"more":1})", "null",
           [](const auto& object) { return object.reloadMcpServerConfig(); }),
    onOrmel(R"({"id":2,"method":"mcpServer/resource/read","params":{"threadId":"t1","server":"s","uri":"u"}})",
            R"({"contents":[]})", [](const Ormel& ormel) { return ormel.readMcpResource("t1", "s", "u"); }),
    onOrmel(R"({"id":2,"method":"mcpServer/resource/read","params":{"threadId":"","server":"","uri":""}})",
            R"({"contents":[{"uri":"u"},{"uri":"v","mimeType":"text/plain","text":"x","blob":"eA==",)"
            R"("_meta":{"k":[1]}}]})",
            [](const Ormel& ormel) { return ormel.readMcpResource("", "", ""); }),
    onOrmel(R"({"id":2,"method":"mcpServer/tool/call","params":{"threadId":"t1","server":"s","tool":"t"}})",
            aToolResult, [](const Ormel& ormel) { return ormel.callMcpServerTool("t1", "s", "t"); }),
    onOrmel(R"({"id":2,"method":"mcpServer/tool/call","params":{"threadId":"t1","server":"s","tool":"t",)"
            R"("arguments":{"a":[1,null]},"_meta":{"k":"v"}}})",
            R"({"content":[{"type":"text","text":"x"},1,null],"structuredContent":{"y":2},"isError":false,)"
            R"("_meta":{"z":null}})",
            [](const Ormel& ormel) {
              CallMcpServerToolParams params;
              params.arguments = JSONValue::object({{"a", JSONValue::array({1, nullptr})}});
              params.meta = JSONValue::object({{"k", "v"}});
              return ormel.callMcpServerTool("t1", "s", "t", params);
            }),
    // JSON null is a value too.
    onOrmel(R"({"id":2,"method":"mcpServer/tool/call","params":{"threadId":"","server":"","tool":"",)"
            R"("arguments":null,"_meta":null}})",
            R"({"content":[],"structured_content":[3],"isError":true})",
            R"({"content":[],"structuredContent":[3],"isError":true})",
            [](const Ormel& ormel) {
              CallMcpServerToolParams params;
              params.arguments = JSONValue();
              params.meta = JSONValue();
              return ormel.callMcpServerTool("", "", "", params);
            }),
};

#undef ORMEL_SMALL_APP_READ
#undef ORMEL_WHOLE_APP
#undef ORMEL_MCP_SERVERS

TEST(AppCalls, GoOutExactly) { expectCalls(appRows); }

TEST(AppCalls, FailByTheirRecordAndByTheServersError) { expectFailures(appRows, appRecords); }

}  // namespace
