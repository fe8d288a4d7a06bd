#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "OrmelSDK/Records/AccountRecords.h"
#include "OrmelSDK/Records/AppRecords.h"
#include "OrmelSDK/Records/ConfigRecords.h"
#include "OrmelSDK/Records/DeviceRecords.h"
#include "OrmelSDK/Records/EmptyResponses.h"
#include "OrmelSDK/Records/ExperimentalFeatureRecords.h"
#include "OrmelSDK/Records/ExternalAgentRecords.h"
#include "OrmelSDK/Records/HookRecords.h"
#include "OrmelSDK/Records/McpServerRecords.h"
#include "OrmelSDK/Records/ModelRecords.h"
#include "OrmelSDK/Records/PermissionRecords.h"
#include "OrmelSDK/Records/PluginRecords.h"
#include "OrmelSDK/Records/SkillRecords.h"
#include "ormel-simulator/Catalogue/CatalogueAgent.h"
#include "ormel-simulator/Catalogue/JSONEditing.h"

namespace ormel::simulator {
namespace {

/// Reads the reply by the record of its method, and gives what the record kept of it.
template <typename Record>
JSONValue kept(const JSONValue& reply) {
  return encode(decode<Record>(reply));
}

struct Call {
  const char* method;
  const char* params;
  JSONValue (*read)(const JSONValue& reply);
  /// A member that the record must have kept, so that an empty reply does not pass.
  const char* member;
};

// One after the other: what one call makes, a later one finds. "THREAD", "KEY" and "SHARE" are filled in.
const Call calls[] = {
    {"account/read", R"({"refreshToken":false})", kept<AccountReadResponse>, "account"},
    {"getAuthStatus", R"({"includeToken":null,"refreshToken":null})", kept<AuthStatusResponse>, "authMethod"},
    {"account/rateLimits/read", "{}", kept<AccountRateLimitsResponse>, "rateLimitResetCredits"},
    {"account/rateLimitResetCredit/consume", R"({"idempotencyKey":"k"})",
     kept<AccountRateLimitResetCreditConsumeResponse>, "outcome"},
    {"account/usage/read", "{}", kept<AccountTokenUsageResponse>, "dailyUsageBuckets"},
    {"account/workspaceMessages/read", "{}", kept<WorkspaceMessagesResponse>, "messages"},
    {"account/sendAddCreditsNudgeEmail", R"({"creditType":"usage_limit"})", kept<AddCreditsNudgeEmailResponse>,
     "status"},
    {"account/login/cancel", R"({"loginId":"none"})", kept<AccountLoginCancelResponse>, "status"},
    {"account/login/start", R"({"type":"parlaneDeviceCode"})", kept<AccountLoginResponse>, "userCode"},
    {"account/login/start", R"({"type":"parlane","ormelStreamlinedLogin":true,"appBrand":"ormel"})",
     kept<AccountLoginResponse>, "authUrl"},
    {"feedback/upload",
     R"({"classification":"praise","threadId":"THREAD","includeLogs":true,"extraLogFiles":["/a"],"tags":{"a":"b"}})",
     kept<FeedbackUploadResponse>, "threadId"},
    {"device/key/create", R"({"accountUserId":"u","clientId":"c","protectionPolicy":"hardware_only"})",
     kept<DeviceKeyCreateResponse>, "keyId"},
    {"device/key/public", R"({"keyId":"KEY"})", kept<DeviceKeyCreateResponse>, "publicKeySpkiDerBase64"},
    {"device/key/sign", R"({"keyId":"KEY","payload":{"a":1}})", kept<DeviceKeySignResponse>, "signatureDerBase64"},
    {"plugin/list", R"({"cwds":["/w"],"forceRefetch":true})", kept<PluginListResponse>, "marketplaces"},
    {"plugin/install", R"({"pluginName":"herbarium","marketplacePath":"/ormel/marketplaces/garden/marketplace.json"})",
     kept<PluginInstallResponse>, "appsNeedingAuth"},
    {"plugin/installed", R"({"installSuggestionPluginNames":["tides"]})", kept<PluginInstalledResponse>,
     "marketplaces"},
    {"plugin/read", R"({"pluginName":"herbarium","marketplacePath":"/ormel/marketplaces/garden/marketplace.json"})",
     kept<PluginReadResponse>, "plugin"},
    {"plugin/skill/read",
     R"({"remoteMarketplaceName":"harbour","remotePluginId":"plugin-tides","skillName":"read-a-tide-table"})",
     kept<PluginSkillReadResponse>, "contents"},
    {"plugin/share/save",
     R"({"pluginPath":"/w/rake","discoverability":"LISTED",
         "shareTargets":[{"principalType":"group","principalId":"g","role":"editor"}]})",
     kept<PluginShareSaveResponse>, "shareUrl"},
    {"plugin/share/updateTargets", R"({"remotePluginId":"SHARE","discoverability":"PRIVATE","shareTargets":[]})",
     kept<PluginShareUpdateTargetsResponse>, "principals"},
    {"plugin/share/list", "{}", kept<PluginShareListResponse>, "data"},
    {"plugin/share/checkout", R"({"remotePluginId":"SHARE"})", kept<PluginShareCheckoutResponse>, "pluginPath"},
    {"plugin/share/delete", R"({"remotePluginId":"SHARE"})", kept<PluginShareDeleteResponse>, nullptr},
    {"plugin/uninstall", R"({"pluginId":"herbarium@garden"})", kept<PluginUninstallResponse>, nullptr},
    {"marketplace/add", R"({"source":"https://code.example/shed.git","refName":"main","sparsePaths":["a"]})",
     kept<MarketplaceAddResponse>, "installedRoot"},
    {"marketplace/upgrade", "{}", kept<MarketplaceUpgradeResponse>, "upgradedRoots"},
    {"marketplace/remove", R"({"marketplaceName":"shed"})", kept<MarketplaceRemoveResponse>, "installedRoot"},
    {"config/read", R"({"includeLayers":true,"cwd":"/w"})", kept<ConfigReadResponse>, "config"},
    {"configRequirements/read", "{}", kept<ConfigRequirementsReadResponse>, "requirements"},
    {"config/value/write", R"({"keyPath":"model","value":"simulated-deep","mergeStrategy":"replace"})",
     kept<ConfigWriteAck>, nullptr},
    {"config/batchWrite",
     R"({"edits":[{"keyPath":"apps.almanac","value":{"approvals_reviewer":"user"},"mergeStrategy":"upsert"}],
         "reloadUserConfig":true})",
     kept<ConfigBatchWriteResponse>, "version"},
    {"config/read", R"({"includeLayers":false})", kept<ConfigReadResponse>, "config"},
    {"model/list", R"({"includeHidden":true})", kept<ModelListResponse>, "data"},
    {"modelProvider/capabilities/read", "{}", kept<ModelProviderCapabilitiesReadResponse>, "webSearch"},
    {"permissionProfile/list", R"({"cwd":"/w"})", kept<PermissionProfileListResponse>, "data"},
    {"experimentalFeature/list", R"({"threadId":"THREAD"})", kept<ExperimentalFeatureListResponse>, "data"},
    {"experimentalFeature/enablement/set", R"({"enablement":{"night_shift":true}})",
     kept<ExperimentalFeatureEnablementSetResponse>, "enablement"},
    {"skills/list", R"({"cwds":["/w"],"forceReload":true})", kept<SkillsListResponse>, "data"},
    {"skills/config/write", R"({"enabled":false,"name":"water-the-beds"})", kept<ConfigWriteAck>, nullptr},
    {"hooks/list", R"({"cwds":["/w"]})", kept<HooksListResponse>, "data"},
    {"app/list", R"({"threadId":"THREAD","forceRefetch":true})", kept<AppsListResponse>, "data"},
    {"app/installed", R"({"forceRefresh":true})", kept<AppsInstalledResponse>, "apps"},
    {"app/read", R"({"appIds":["almanac","none"],"includeTools":true})", kept<AppsReadResponse>, "missingAppIds"},
    {"mcpServerStatus/list", R"({"detail":"full"})", kept<McpServerStatusListResponse>, "data"},
    {"mcpServer/oauth/login", R"({"name":"orchard","scopes":["pick"],"timeoutSecs":60})",
     kept<McpServerOAuthLoginResponse>, "authorizationUrl"},
    {"config/mcpServer/reload", "{}", kept<EmptyRPCResponse>, nullptr},
    {"mcpServer/resource/read", R"({"threadId":"THREAD","server":"almanac","uri":"almanac://moon.png"})",
     kept<McpResourceReadResponse>, "contents"},
    {"mcpServer/tool/call",
     R"({"threadId":"THREAD","server":"almanac","tool":"look_up","arguments":{"day":"today"},"_meta":{"a":1}})",
     kept<McpServerToolCallResponse>, "structuredContent"},
    {"externalAgentConfig/detect", R"({"includeHome":true,"cwds":["/w"]})", kept<ExternalAgentConfigDetectResponse>,
     "items"},
    {"externalAgentConfig/import",
     R"({"migrationItems":[{"itemType":"SKILLS","description":"d","cwd":null,"details":null}],"source":"velnor-desk"})",
     kept<ExternalAgentConfigImportResponse>, "importId"},
    {"externalAgentConfig/import/readHistories", "{}", kept<ExternalAgentConfigImportHistoriesReadResponse>, "data"},
    {"environment/add", R"({"environmentId":"e","execServerUrl":"wss://greenhouse.example/exec"})",
     kept<EnvironmentAddResponse>, nullptr},
    {"remoteControl/status/read", "{}", kept<RemoteControlStatusResponse>, "installationId"},
    {"remoteControl/enable", "{}", kept<RemoteControlStatusResponse>, "environmentId"},
    {"remoteControl/disable", "{}", kept<RemoteControlStatusResponse>, "installationId"},
    {"windowsSandbox/readiness", "{}", kept<WindowsSandboxReadinessResponse>, "status"},
    {"windowsSandbox/setupStart", R"({"mode":"elevated","cwd":"/w"})", kept<WindowsSandboxSetupStartResponse>,
     "started"},
    {"account/login/start", R"({"type":"apiKey","apiKey":"k"})", kept<AccountLoginResponse>, "type"},
    {"account/logout", "{}", kept<EmptyRPCResponse>, nullptr},
};

std::string filledIn(std::string text, const std::string& name, const std::string& value) {
  const std::size_t place = text.find(name);
  return place == std::string::npos ? text : text.replace(place, name.size(), value);
}

TEST(CatalogueRecords, ReadEveryReply) {
  CatalogueAgent agent;
  agent.logIn();
  const std::string thread = agent.startThread();
  std::string key;
  std::string share;
  for (const Call& call : calls) {
    SCOPED_TRACE(call.method);
    std::string params = filledIn(filledIn(call.params, "THREAD", thread), "KEY", key);
    const JSONValue reply = agent.get(call.method, filledIn(params, "SHARE", share));
    const JSONValue record = call.read(reply);
    if (call.member) {
      const JSONValue member = anyMember(record, call.member);
      EXPECT_FALSE(member.isNull()) << record;
      const bool mayBeEmpty = !member.arrayValue() || std::string_view(call.member) == "appsNeedingAuth";
      EXPECT_TRUE(mayBeEmpty || !member.arrayValue()->empty()) << record;
    }
    key = textMember(reply, "keyId").value_or(key);
    if (std::string_view(call.method) == "plugin/share/save") share = textMember(reply, "remotePluginId").value_or("");
  }
  EXPECT_EQ(agent.finish(), 0);
}

TEST(CatalogueRecords, NeedNoParamsWhereThereMayBeNone) {
  CatalogueAgent agent;
  for (const char* method : {"account/logout", "configRequirements/read", "model/list", "config/mcpServer/reload",
                             "externalAgentConfig/import/readHistories", "remoteControl/status/read",
                             "windowsSandbox/readiness", "account/read"}) {
    agent.send(JSONValue::object({{"id", method}, {"method", method}}).encode());
    JSONValue answer;
    do {
      answer = agent.receive();
    } while (anyMember(answer, "id") != JSONValue(method));
    EXPECT_NE(answer.find("result"), nullptr) << answer;
  }
}

TEST(CatalogueRecords, AreNotGivenForMethodsThatTheAgentIsToldToDoWithout) {
  CatalogueAgent agent(
      std::vector<std::string>{"ORMEL_SIMULATOR_FORGET=1", "ORMEL_SIMULATOR_WITHOUT=model/list,config/read"});
  EXPECT_EQ(agent.fault("model/list"), "-32601 Method not found: model/list");
  EXPECT_EQ(agent.fault("config/read"), "-32601 Method not found: config/read");
  EXPECT_FALSE(anyMember(agent.get("permissionProfile/list"), "data").isNull());
}

struct BadCall {
  const char* method;
  const char* params;
  const char* refusal;
};

const BadCall badCalls[] = {
    {"account/read", R"({"refreshToken":"yes"})", "-32602 refreshToken must be true or false"},
    {"account/login/start", "{}", "-32602 type must be one of: parlane, parlaneDeviceCode, apiKey"},
    {"account/login/start", R"({"type":"apiKey"})", "-32602 apiKey must be a text that is not empty"},
    {"account/login/start", R"({"type":"parlane","appBrand":"x"})", "-32602 appBrand must be one of: ormel, parlane"},
    {"account/login/cancel", "{}", "-32602 loginId must be a text that is not empty"},
    {"account/rateLimitResetCredit/consume", "{}", "-32602 idempotencyKey must be a text that is not empty"},
    {"account/rateLimitResetCredit/consume", R"({"idempotencyKey":"a","creditId":"b"})",
     "-32602 there is no credit with the creditId b"},
    {"account/sendAddCreditsNudgeEmail", R"({"creditType":"gold"})",
     "-32602 creditType must be one of: credits, usage_limit"},
    {"device/key/create", R"({"accountUserId":"u"})", "-32602 clientId must be a text that is not empty"},
    {"device/key/create", R"({"accountUserId":"u","clientId":"c","protectionPolicy":"none"})",
     "-32602 protectionPolicy must be one of: hardware_only, allow_os_protected_nonextractable"},
    {"device/key/public", R"({"keyId":"k"})", "-32602 there is no device key with the keyId k"},
    {"device/key/sign", R"({"keyId":"k"})", "-32602 payload must be given"},
    {"feedback/upload", "{}", "-32602 classification must be a text that is not empty"},
    {"feedback/upload", R"({"classification":"c","tags":{"a":1}})",
     "-32602 tags must be an object whose values are texts"},
    {"feedback/upload", R"({"classification":"c","extraLogFiles":[1]})",
     "-32602 extraLogFiles must be a list of texts"},
    {"plugin/list", R"({"cwds":"/w"})", "-32602 cwds must be a list of texts"},
    {"plugin/list", R"({"marketplaceKinds":["moon"]})",
     "-32602 marketplaceKinds must be one of: local, vertical, workspace-directory, shared-with-me"},
    {"plugin/read", R"({"pluginName":"tides"})",
     "-32602 either marketplacePath or remoteMarketplaceName must be given, and not both"},
    {"plugin/read", R"({"pluginName":"tides","marketplacePath":"/a","remoteMarketplaceName":"b"})",
     "-32602 either marketplacePath or remoteMarketplaceName must be given, and not both"},
    {"plugin/read", R"({"pluginName":"tides","remoteMarketplaceName":"b"})", "-32602 there is no marketplace b"},
    {"plugin/read", R"({"pluginName":"rake","remoteMarketplaceName":"harbour"})",
     "-32602 the marketplace harbour has no plugin rake"},
    {"plugin/install", R"({"pluginName":"salvage","remoteMarketplaceName":"harbour"})",
     "-32600 the plugin salvage@harbour cannot be installed: disabled_by_admin"},
    {"plugin/uninstall", R"({"pluginId":"tides@harbour"})",
     "-32602 no plugin with the pluginId tides@harbour is installed"},
    {"plugin/skill/read", R"({"remoteMarketplaceName":"harbour","remotePluginId":"plugin-tides","skillName":"x"})",
     "-32602 there is no skill x of the plugin plugin-tides in harbour"},
    {"plugin/share/save", R"({"pluginPath":"/"})", "-32602 pluginPath must end in the name of a plugin: /"},
    {"plugin/share/save", R"({"pluginPath":"/a","discoverability":"x"})",
     "-32602 discoverability must be one of: LISTED, UNLISTED, PRIVATE"},
    {"plugin/share/save", R"({"pluginPath":"/a","shareTargets":[{"principalType":"cat"}]})",
     "-32602 principalType must be one of: user, group, workspace"},
    {"plugin/share/save", R"({"pluginPath":"/a","remotePluginId":"x"})",
     "-32602 no plugin is shared with the remotePluginId x"},
    {"plugin/share/updateTargets", R"({"remotePluginId":"x","discoverability":"LISTED","shareTargets":[]})",
     "-32602 discoverability must be one of: UNLISTED, PRIVATE"},
    {"plugin/share/updateTargets", R"({"remotePluginId":"x","discoverability":"PRIVATE"})",
     "-32602 shareTargets must be a list of objects"},
    {"plugin/share/delete", R"({"remotePluginId":"x"})", "-32602 no plugin is shared with the remotePluginId x"},
    {"marketplace/add", R"({"source":"https://a b/"})",
     "-32602 source must end in the name of a marketplace: https://a b/"},
    {"marketplace/add", R"({"source":"/elsewhere/garden"})",
     "-32600 there is a marketplace garden from another source"},
    {"marketplace/remove", R"({"marketplaceName":"garden"})", "-32602 no marketplace garden was added"},
    {"marketplace/upgrade", R"({"marketplaceName":"x"})", "-32602 no marketplace x was added"},
    {"config/read", R"({"includeLayers":1})", "-32602 includeLayers must be true or false"},
    {"model/list", R"({"limit":0})", "-32602 limit must be a whole number from 1 on"},
    {"model/list", R"({"includeHidden":"no"})", "-32602 includeHidden must be true or false"},
    {"experimentalFeature/enablement/set", R"({"enablement":{"x":true}})", "-32602 there is no experimental feature x"},
    {"experimentalFeature/enablement/set", R"({"enablement":{"goals":1}})",
     "-32602 enablement must be an object whose values are true or false"},
    {"skills/config/write", R"({"name":"water-the-beds"})", "-32602 enabled must be true or false"},
    {"skills/config/write", R"({"enabled":true})", "-32602 either path or name of a skill must be given, and not both"},
    {"skills/config/write", R"({"enabled":true,"name":"x"})", "-32602 there is no skill x"},
    {"app/read", R"({"includeTools":true})", "-32602 appIds must be a list of texts"},
    {"mcpServerStatus/list", R"({"detail":"some"})", "-32602 detail must be one of: full, toolsAndAuthOnly"},
    {"mcpServer/oauth/login", R"({"name":"x"})", "-32602 there is no MCP server x"},
    {"mcpServer/oauth/login", R"({"name":"almanac"})", "-32600 the MCP server almanac has no login"},
    {"mcpServer/oauth/login", R"({"name":"orchard","timeoutSecs":1.5})",
     "-32602 timeoutSecs must be a whole number from 1 on"},
    {"externalAgentConfig/import", R"({"migrationItems":{}})", "-32602 migrationItems must be a list of objects"},
    {"externalAgentConfig/import", R"({"migrationItems":[{"itemType":"SKILLS"}]})",
     "-32602 description must be a text that is not empty"},
    {"environment/add", R"({"environmentId":"e","execServerUrl":"greenhouse"})",
     "-32602 execServerUrl must be an address of ws, wss, http or https: greenhouse"},
    {"windowsSandbox/setupStart", R"({"mode":"half"})", "-32602 mode must be one of: elevated, unelevated"},
};

TEST(CatalogueRecords, AreRefusedForBadParamsByASentence) {
  CatalogueAgent agent;
  agent.logIn();
  for (const BadCall& call : badCalls) {
    EXPECT_EQ(agent.fault(call.method, call.params), call.refusal) << call.method << " " << call.params;
  }
  agent.send(R"({"id":"list","method":"model/list","params":[]})");
  EXPECT_EQ(agent.receive(),
            JSONValue::decode(R"({"id":"list","error":{"code":-32602,"message":"params must be an object"}})"));
}

TEST(CatalogueRecords, AreRefusedForThreadsThatAreNotKnown) {
  CatalogueAgent agent;
  const char* const params = R"({"threadId":"x","server":"almanac","uri":"u","tool":"t","classification":"c",
                                 "appIds":[],"name":"orchard"})";
  for (const char* method :
       {"feedback/upload", "experimentalFeature/list", "app/list", "app/installed", "app/read", "mcpServerStatus/list",
        "mcpServer/oauth/login", "mcpServer/resource/read", "mcpServer/tool/call"}) {
    EXPECT_THAT(agent.fault(method, params), ::testing::StartsWith("-32600 thread not found: x; ")) << method;
  }
}

struct Listing {
  const char* method;
  const char* otherParams;
  const char* idKey;
};

TEST(CatalogueRecords, ComeInPages) {
  CatalogueAgent agent;
  const Listing listings[] = {{"model/list", R"("includeHidden":true,)", "id"},
                              {"permissionProfile/list", "", "id"},
                              {"experimentalFeature/list", "", "name"},
                              {"app/list", "", "id"},
                              {"mcpServerStatus/list", "", "name"}};
  std::string foreignCursor = R"([0,"thread"])";
  for (const Listing& listing : listings) {
    SCOPED_TRACE(listing.method);
    const JSONValue whole = agent.get(listing.method, "{" + std::string(listing.otherParams) + R"("limit":100})");
    const JSONValue data = anyMember(whole, "data");
    ASSERT_GT(data.arrayValue()->size(), 3U);
    EXPECT_EQ(whole.find("nextCursor"), nullptr);
    std::vector<JSONValue> gathered;
    std::string cursor = "null";
    std::size_t pages = 0;
    while (!cursor.empty()) {
      const JSONValue page =
          agent.get(listing.method, "{" + std::string(listing.otherParams) + R"("limit":2,"cursor":)" + cursor + "}");
      for (const JSONValue& element : elementsOf(anyMember(page, "data"))) gathered.push_back(element);
      cursor = page.find("nextCursor") ? page.find("nextCursor")->encode() : "";
      ++pages;
    }
    EXPECT_EQ(JSONValue::array(gathered), data);
    EXPECT_EQ(pages, (gathered.size() + 1) / 2);
    EXPECT_FALSE(textMember(gathered.front(), listing.idKey).value_or("").empty());
    for (const std::string& wrong : {foreignCursor, std::string("x"), std::string()}) {
      JSONObjectBuilder params;
      EXPECT_EQ(agent.refusal(listing.method, params.set("cursor", wrong)),
                "-32602 cursor is none that " + std::string(listing.method) + " gave out: " + wrong);
    }
    const JSONValue first = agent.get(listing.method, R"({"limit":1})");
    foreignCursor = textMember(first, "nextCursor").value_or("");
  }
}

}  // namespace
}  // namespace ormel::simulator
