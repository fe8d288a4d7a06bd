#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "OrmelSDK/Records/AppRecords.h"
#include "OrmelSDK/Records/DeviceRecords.h"
#include "OrmelSDK/Records/ExternalAgentRecords.h"
#include "OrmelSDK/Records/McpServerRecords.h"
#include "OrmelSDK/Records/ModelRecords.h"
#include "Support/TemporaryDirectory.h"
#include "ormel-simulator/Catalogue/CatalogueAgent.h"
#include "ormel-simulator/Catalogue/JSONEditing.h"

namespace ormel::simulator {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string toggle(const std::string& keyPath, bool value) {
  return R"({"keyPath":")" + keyPath + R"(","value":)" + (value ? "true" : "false") + R"(,"mergeStrategy":"replace"})";
}

std::map<std::string, McpServerStatusSummary> servers(CatalogueAgent& agent, const char* params = "{}") {
  std::map<std::string, McpServerStatusSummary> found;
  for (const auto& server : agent.read<McpServerStatusListResponse>("mcpServerStatus/list", params).data) {
    found.emplace(server.name, server);
  }
  return found;
}

TEST(CatalogueApps, AreEnabledByTheConfiguration) {
  CatalogueAgent agent;
  const auto enabled = [&agent] {
    std::map<std::string, bool> found;
    for (const auto& app : agent.read<AppsInstalledResponse>("app/installed").apps) {
      EXPECT_EQ(app.enabled, app.callable);
      found[app.id] = app.enabled;
    }
    for (const auto& app : agent.read<AppsListResponse>("app/list").data) {
      const auto installed = found.find(app.id);
      EXPECT_TRUE(installed == found.end() || app.isEnabled == installed->second) << app.id;
      EXPECT_EQ(app.isAccessible, found.contains(app.id)) << app.id;
    }
    return found;
  };
  using Enabled = std::map<std::string, bool>;
  EXPECT_EQ(enabled(), (Enabled{{"almanac", true}, {"letterbox", true}, {"weathercock", true}}));
  agent.get("config/value/write", toggle("apps.almanac.enabled", false));
  EXPECT_EQ(enabled(), (Enabled{{"almanac", false}, {"letterbox", true}, {"weathercock", true}}));
  agent.get("config/value/write", toggle("apps._default.enabled", false));
  agent.get("config/value/write", toggle("apps.almanac.enabled", true));
  EXPECT_EQ(enabled(), (Enabled{{"almanac", true}, {"letterbox", false}, {"weathercock", false}}));
}

TEST(CatalogueApps, AreReadInTheOrderAskedFor) {
  CatalogueAgent agent;
  const auto read =
      agent.read<AppsReadResponse>("app/read", R"({"appIds":["weathercock","none","almanac"],"includeTools":true})");
  ASSERT_EQ(read.apps.size(), 2U);
  EXPECT_EQ(read.apps[0].id, "weathercock");
  EXPECT_EQ(read.apps[1].toolSummaries->at(0).title, "Look up");
  EXPECT_TRUE(read.apps[1].toolSummaries->at(0).isReadOnly);
  EXPECT_THAT(read.missingAppIDs, ElementsAre("none"));
  EXPECT_FALSE(agent.read<AppsReadResponse>("app/read", R"({"appIds":["almanac"]})").apps.at(0).toolSummaries);
}

TEST(CatalogueApps, AreToldAgainWhenTheyAreFetchedAnew) {
  CatalogueAgent agent;
  const int request = agent.ask("app/list", CatalogueAgent::paramsFrom(R"({"forceRefetch":true,"limit":1})"));
  const JSONValue told = anyMember(agent.await("app/list/updated"), "params");
  EXPECT_EQ(elementsOf(anyMember(told, "data")).size(), 5U);
  agent.awaitAnswer(request);
}

TEST(CatalogueMcpServers, HaveEachAStatus) {
  CatalogueAgent agent;
  const auto full = servers(agent);
  EXPECT_EQ(full.at("almanac").runtimeStatus, McpServerRuntimeStatus::connected);
  EXPECT_EQ(full.at("almanac").authStatus, McpAuthStatus::unsupported);
  EXPECT_EQ(full.at("almanac").tools.size(), 2U);
  EXPECT_EQ(full.at("almanac").resources.size(), 2U);
  EXPECT_TRUE(full.at("almanac").serverInfo);
  EXPECT_EQ(full.at("letterbox").authStatus, McpAuthStatus::bearerToken);
  EXPECT_EQ(full.at("orchard").runtimeStatus, McpServerRuntimeStatus::authenticationRequired);
  EXPECT_EQ(full.at("orchard").authStatus, McpAuthStatus::notLoggedIn);
  EXPECT_THAT(full.at("orchard").tools, IsEmpty());
  EXPECT_EQ(full.at("rusty-pump").runtimeStatus, McpServerRuntimeStatus::failed);
  const auto brief = servers(agent, R"({"detail":"toolsAndAuthOnly"})");
  EXPECT_EQ(brief.at("almanac").tools, full.at("almanac").tools);
  EXPECT_THAT(brief.at("almanac").resources, IsEmpty());
  EXPECT_THAT(brief.at("almanac").resourceTemplates, IsEmpty());
  EXPECT_FALSE(brief.at("almanac").serverInfo);
}

TEST(CatalogueMcpServers, AreLoggedInTo) {
  const testing::TemporaryDirectory state;
  CatalogueAgent agent(state.path().string());
  const std::string thread = agent.startThread();
  const std::string read =
      R"({"threadId":")" + thread + R"(","server":"orchard","uri":"orchard://trees","tool":"pick"})";
  EXPECT_EQ(agent.fault("mcpServer/resource/read", read),
            "-32600 the MCP server orchard is not connected: authenticationRequired");
  EXPECT_EQ(agent.fault("mcpServer/tool/call", read),
            "-32600 the MCP server orchard is not connected: authenticationRequired");
  agent.get("mcpServer/oauth/login", R"({"name":"orchard"})");
  const JSONValue completed = anyMember(agent.await("mcpServer/oauthLogin/completed"), "params");
  EXPECT_EQ(textMember(completed, "name"), "orchard");
  EXPECT_TRUE(flagMember(completed, "success"));
  const JSONValue startup = anyMember(agent.await("mcpServer/startupStatus/updated"), "params");
  EXPECT_EQ(textMember(startup, "status"), "connected");
  EXPECT_EQ(agent.read<McpResourceReadResponse>("mcpServer/resource/read", read).contents.at(0).text,
            "Four apples, two pears.\n");
  CatalogueAgent other(state.path().string());
  EXPECT_EQ(servers(other).at("orchard").authStatus, McpAuthStatus::oAuth);
  EXPECT_EQ(servers(other).at("orchard").runtimeStatus, McpServerRuntimeStatus::connected);

  const testing::TemporaryDirectory slowState;
  CatalogueAgent slow(slowState.path().string(), CatalogueAgent::endlessPace);
  slow.get("mcpServer/oauth/login", R"({"name":"orchard"})");
  EXPECT_EQ(servers(slow).at("orchard").authStatus, McpAuthStatus::notLoggedIn);
}

TEST(CatalogueMcpServers, AreAddedAndDisabledByTheConfiguration) {
  CatalogueAgent agent;
  const std::string thread = agent.startThread();
  agent.get("config/value/write",
            R"({"keyPath":"mcp_servers.parrot","value":{"command":"parrot"},"mergeStrategy":"upsert"})");
  EXPECT_EQ(servers(agent).at("parrot").runtimeStatus, McpServerRuntimeStatus::connected);
  const std::string call = R"({"threadId":")" + thread + R"(","server":"parrot","tool":"echo"})";
  EXPECT_EQ(agent.read<McpServerToolCallResponse>("mcpServer/tool/call", call).isError, false);
  agent.get("config/value/write", toggle("mcp_servers.parrot.enabled", false));
  agent.get("config/value/write", toggle("mcp_servers.almanac.enabled", false));
  EXPECT_EQ(servers(agent).at("parrot").runtimeStatus, McpServerRuntimeStatus::disabled);
  EXPECT_EQ(servers(agent).at("almanac").runtimeStatus, McpServerRuntimeStatus::disabled);
  EXPECT_EQ(agent.fault("mcpServer/tool/call", call), "-32600 the MCP server parrot is not connected: disabled");
  const int reload = agent.ask("config/mcpServer/reload");
  std::map<std::string, std::string> told;
  while (told.size() < 5) {
    const JSONValue params = anyMember(agent.await("mcpServer/startupStatus/updated"), "params");
    told[textMember(params, "name").value_or("")] = textMember(params, "status").value_or("");
  }
  agent.awaitAnswer(reload);
  EXPECT_EQ(told.at("parrot"), "disabled");
  EXPECT_EQ(told.at("rusty-pump"), "failed");
  EXPECT_EQ(told.at("letterbox"), "connected");
}

TEST(CatalogueMcpServers, PretendToCallTools) {
  CatalogueAgent agent;
  const std::string thread = agent.startThread();
  const auto params = [&thread](const std::string& rest) {
    return R"({"threadId":")" + thread + R"(","server":"almanac",)" + rest + "}";
  };
  const auto called = agent.read<McpServerToolCallResponse>(
      "mcpServer/tool/call", params(R"("tool":"look_up","arguments":{"day":"today"},"_meta":{"trace":1})"));
  EXPECT_EQ(called.isError, false);
  EXPECT_EQ(called.content.size(), 1U);
  EXPECT_EQ(called.meta, JSONValue::object({{"trace", 1}}));
  EXPECT_EQ(anyMember(*called.structuredContent, "arguments"), JSONValue::object({{"day", "today"}}));
  const auto failed = agent.read<McpServerToolCallResponse>("mcpServer/tool/call", params(R"("tool":"look_up")"));
  EXPECT_EQ(failed.isError, true);
  EXPECT_EQ(textMember(failed.content.at(0), "text"), "The argument day is missing");
  EXPECT_EQ(agent.fault("mcpServer/tool/call", params(R"("tool":"dig")")),
            "-32602 the MCP server almanac has no tool dig");
  EXPECT_EQ(agent.fault("mcpServer/resource/read", params(R"("uri":"x://y")")),
            "-32602 the MCP server almanac has no resource x://y");
  EXPECT_EQ(
      agent.fault("mcpServer/tool/call", R"({"threadId":")" + thread + R"(","server":"rusty-pump","tool":"pump"})"),
      "-32600 the MCP server rusty-pump is not connected: the pump did not start: no such program");
  const auto image =
      agent.read<McpResourceReadResponse>("mcpServer/resource/read", params(R"("uri":"almanac://moon.png")"));
  EXPECT_EQ(image.contents.at(0).uri, "almanac://moon.png");
  EXPECT_TRUE(image.contents.at(0).blob && image.contents.at(0).meta);
}

TEST(CatalogueModels, HaveOneDefaultAndAreHiddenUnlessAskedFor) {
  CatalogueAgent agent;
  const auto shown = agent.read<ModelListResponse>("model/list").data;
  const auto all = agent.read<ModelListResponse>("model/list", R"({"includeHidden":true})").data;
  EXPECT_LT(shown.size(), all.size());
  EXPECT_EQ(std::count_if(all.begin(), all.end(), [](const auto& model) { return model.isDefault; }), 1);
  const std::string thread = textMember(agent.result("thread/start"), "model").value_or("");
  for (const auto& model : all) {
    EXPECT_EQ(model.isDefault, model.model == thread) << model.id;
    const auto& efforts = model.supportedReasoningEfforts;
    EXPECT_TRUE(std::any_of(efforts.begin(), efforts.end(), [&](const auto& effort) {
      return effort.reasoningEffort == model.defaultReasoningEffort;
    })) << model.id;
  }
  for (const auto& model : shown) EXPECT_FALSE(model.hidden) << model.id;
}

TEST(CatalogueSurroundings, AreRemembered) {
  const testing::TemporaryDirectory state;
  CatalogueAgent agent(state.path().string());
  CatalogueAgent other(state.path().string());
  const auto before = agent.read<RemoteControlStatusResponse>("remoteControl/status/read");
  EXPECT_EQ(before.status, RemoteControlConnectionStatus::disabled);
  const auto enabled = agent.read<RemoteControlStatusResponse>("remoteControl/enable");
  EXPECT_EQ(enabled.status, RemoteControlConnectionStatus::connected);
  EXPECT_EQ(enabled.installationID, before.installationID);
  EXPECT_TRUE(enabled.environmentID);
  EXPECT_EQ(other.read<RemoteControlStatusResponse>("remoteControl/status/read"), enabled);
  EXPECT_EQ(other.read<RemoteControlStatusResponse>("remoteControl/enable"), enabled);
  EXPECT_EQ(other.read<RemoteControlStatusResponse>("remoteControl/disable"), before);
  EXPECT_EQ(agent.read<RemoteControlStatusResponse>("remoteControl/status/read"), before);

  const auto readiness = [&other] {
    return other.read<WindowsSandboxReadinessResponse>("windowsSandbox/readiness").status;
  };
  EXPECT_EQ(readiness(), WindowsSandboxReadiness::notConfigured);
  EXPECT_TRUE(
      agent.read<WindowsSandboxSetupStartResponse>("windowsSandbox/setupStart", R"({"mode":"unelevated"})").started);
  EXPECT_EQ(readiness(), WindowsSandboxReadiness::ready);
}

TEST(CatalogueExternalAgents, LeaveWhatCanBeImported) {
  const testing::TemporaryDirectory state;
  CatalogueAgent agent(state.path().string());
  const auto detect = [&agent](const char* params) {
    return agent.read<ExternalAgentConfigDetectResponse>("externalAgentConfig/detect", params).items;
  };
  EXPECT_THAT(detect("{}"), IsEmpty());
  const auto home = detect(R"({"includeHome":true})");
  ASSERT_EQ(home.size(), 2U);
  EXPECT_FALSE(home[0].cwd);
  const auto folders = detect(R"({"cwds":["/a","/b"]})");
  ASSERT_EQ(folders.size(), 4U);
  EXPECT_EQ(folders[1].cwd, "/b");
  std::vector<JSONValue> items = {encode(home[0]), encode(folders[0])};
  items.push_back(JSONValue::object({{"itemType", "DREAMS"}, {"description", "d"}, {"cwd", {}}, {"details", {}}}));
  const auto imported = decode<ExternalAgentConfigImportResponse>(
      agent.result("externalAgentConfig/import", JSONObjectBuilder().set("migrationItems", JSONValue::array(items))));
  CatalogueAgent other(state.path().string());
  const auto histories =
      other.read<ExternalAgentConfigImportHistoriesReadResponse>("externalAgentConfig/import/readHistories").data;
  ASSERT_EQ(histories.size(), 1U);
  EXPECT_EQ(histories[0].importID, imported.importID);
  EXPECT_THAT(histories[0].successes, ElementsAre(items[0], items[1]));
  ASSERT_EQ(histories[0].failures.size(), 1U);
  EXPECT_EQ(textMember(histories[0].failures[0], "error"), "there is no way to import DREAMS");
}

}  // namespace
}  // namespace ormel::simulator
