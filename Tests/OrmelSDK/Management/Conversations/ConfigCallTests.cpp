#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "OrmelSDK/Management/ConfigParams.h"
#include "OrmelSDK/Records/ConfigRecords.h"
#include "OrmelSDK/Records/EmptyResponses.h"
#include "OrmelSDK/Records/ExperimentalFeatureRecords.h"
#include "OrmelSDK/Records/ExternalAgentRecords.h"
#include "OrmelSDK/Records/HookRecords.h"
#include "OrmelSDK/Records/ModelRecords.h"
#include "OrmelSDK/Records/PermissionRecords.h"
#include "OrmelSDK/Records/SkillRecords.h"
#include "Support/CallRows.h"

namespace {

using namespace ormel;
using namespace ormel::testing;

constexpr const char* noData = R"({"data":[]})";
constexpr const char* noItems = R"({"items":[]})";
constexpr const char* anImport = R"({"importId":"i"})";

// The lists of models, once as a page and once as the result of a walk over all pages.
#define ORMEL_SMALL_MODEL                                                                     \
  R"({"id":"m1","model":"m-1","displayName":"M","description":"d","hidden":false,)"           \
  R"("supportedReasoningEfforts":[],"defaultReasoningEffort":"medium","inputModalities":[],)" \
  R"("supportsPersonality":false,"isDefault":false)"
#define ORMEL_SMALL_MODEL_READ ORMEL_SMALL_MODEL R"(,"additionalSpeedTiers":[],"serviceTiers":[]})"
#define ORMEL_WHOLE_MODEL                                                                               \
  R"({"id":"m2","model":"m-2","upgrade":"m-3","upgradeInfo":{"model":"m-3","upgradeCopy":"better",)"    \
  R"("modelLink":"https://m","migrationMarkdown":"*go*","retirementAt":1800000000},"availabilityNux":)" \
  R"({"message":"new"},"displayName":"M2","description":"d","modelSpecialty":"code","hidden":true,)"    \
  R"("supportedReasoningEfforts":[{"reasoningEffort":"ultra","description":"most"},)"                   \
  R"({"reasoningEffort":"custom-effort","description":"own"}],"defaultReasoningEffort":"xhigh",)"       \
  R"("inputModalities":["text","image","audio","smell"],"supportsPersonality":true,)"                   \
  R"("multiAgentVersion":"disabled","additionalSpeedTiers":["fast"],"serviceTiers":[{"id":"flex",)"     \
  R"("name":"Flex","description":"d"}],"defaultServiceTier":"flex","isDefault":true})"

constexpr const char* aModel = R"({"data":[)" ORMEL_SMALL_MODEL "}]}";
constexpr const char* aModelRead = R"({"data":[)" ORMEL_SMALL_MODEL_READ "]}";
constexpr const char* modelsRead = "[" ORMEL_SMALL_MODEL_READ "]";
constexpr const char* pageOfModels = R"({"data":[)" ORMEL_WHOLE_MODEL R"(],"nextCursor":"n"})";
constexpr const char* profiles = R"({"data":[{"id":":read"},{"id":":write","description":"d","allowed":false}]})";
constexpr const char* profilesRead = R"([{"id":":read","allowed":true},{"id":":write","description":"d",)"
                                     R"("allowed":false}])";
constexpr const char* allHooks =
    R"({"data":[{"cwd":"/a","hooks":[{"key":"k","eventName":"preToolUse","handlerType":"command","timeoutSec":30,)"
    R"("sourcePath":"/h","source":"cloud_managed_config","displayOrder":1,"enabled":true,"isManaged":false},)"
    R"({"key":"l","eventName":"futureEvent","handlerType":"mcpTool","matcher":"*","command":"c","server":"s",)"
    R"("tool":"t","timeoutSec":0,"statusMessage":"m","additionalContextLimit":9,"sourcePath":"","source":"plugin",)"
    R"("pluginId":"p","displayOrder":-2,"enabled":false,"isManaged":true,"currentHash":"abc",)"
    R"("trustStatus":"modified"}],"warnings":["w"],"errors":[{"path":"/e","message":"bad"}]},{"cwd":"/b"}]})";
constexpr const char* allHooksRead =
    R"({"data":[{"cwd":"/a","hooks":[{"key":"k","eventName":"preToolUse","handlerType":"command","timeoutSec":30,)"
    R"("sourcePath":"/h","source":"cloudManagedConfig","displayOrder":1,"enabled":true,"isManaged":false,)"
    R"("currentHash":"","trustStatus":"untrusted"},)"
    R"({"key":"l","eventName":"futureEvent","handlerType":"mcpTool","matcher":"*","command":"c","server":"s",)"
    R"("tool":"t","timeoutSec":0,"statusMessage":"m","additionalContextLimit":9,"sourcePath":"","source":"plugin",)"
    R"("pluginId":"p","displayOrder":-2,"enabled":false,"isManaged":true,"currentHash":"abc",)"
    R"("trustStatus":"modified"}],"warnings":["w"],"errors":[{"path":"/e","message":"bad"}]},)"
    R"({"cwd":"/b","hooks":[],"warnings":[],"errors":[]}]})";

const ReplyRecords configRecords = {
    {"config/read", "ConfigReadResponse"},
    {"configRequirements/read", "ConfigRequirementsReadResponse"},
    {"config/value/write", "ConfigWriteAck"},
    {"config/batchWrite", "ConfigBatchWriteResponse"},
    {"model/list", "ModelListResponse"},
    {"modelProvider/capabilities/read", "ModelProviderCapabilitiesReadResponse"},
    {"permissionProfile/list", "PermissionProfileListResponse"},
    {"experimentalFeature/list", "ExperimentalFeatureListResponse"},
    {"experimentalFeature/enablement/set", "ExperimentalFeatureEnablementSetResponse"},
    {"skills/list", "SkillsListResponse"},
    {"skills/config/write", "ConfigWriteAck"},
    {"hooks/list", "HooksListResponse"},
    {"externalAgentConfig/detect", "ExternalAgentConfigDetectResponse"},
    {"externalAgentConfig/import", "ExternalAgentConfigImportResponse"},
    {"externalAgentConfig/import/readHistories", "ExternalAgentConfigImportHistoriesReadResponse"},
};

const CallRow configRows[] = {
    onOrmel(R"({"id":2,"method":"config/read","params":{"includeLayers":false}})", R"({"config":{}})",
            [](const Ormel& ormel) { return ormel.readConfig(); }),
    onOrmel(R"({"id":2,"method":"config/read","params":{"includeLayers":true,"cwd":"/a"}})",
            R"({"config":{"plugins":{"p":{"enabled":true},"q":{"enabled":false}},"apps":{"_default":{"enabled":true,)"
            R"("approvals_reviewer":"user"},"a":{"enabled":false,"approvalsReviewer":"auto_review"},)"
            R"("b":{"enabled":true}},"skills":{"config":[{"path":"/s","enabled":true},{"name":"n","enabled":false}]},)"
            R"("model":"m"},"layers":[]})",
            R"({"config":{"plugins":{"p":{"enabled":true},"q":{"enabled":false}},"apps":{"_default":{"enabled":true,)"
            R"("approvalsReviewer":"user"},"a":{"enabled":false,"approvalsReviewer":"auto_review"},)"
            R"("b":{"enabled":true}},"skills":{"config":[{"path":"/s","enabled":true},{"name":"n",)"
            R"("enabled":false}]}}})",
            [](const Ormel& ormel) {
              ReadConfigParams params;
              params.includeLayers = true;
              params.cwd = "/a";
              return ormel.readConfig(params);
            }),
    onOrmel(R"({"id":2,"method":"config/read","params":{"includeLayers":false,"cwd":""}})", R"({"config":{"apps":{}}})",
            [](const Ormel& ormel) {
              ReadConfigParams params;
              params.cwd = "";
              return ormel.readConfig(params);
            }),
    onBoth(R"({"id":2,"method":"configRequirements/read"})", "{}",
           [](const auto& object) { return object.readConfigRequirements(); }),
    onBoth(R"({"id":2,"method":"configRequirements/read"})", R"({"requirements":null})", "{}",
           [](const auto& object) { return object.readConfigRequirements(); }),
    onBoth(R"({"id":2,"method":"configRequirements/read"})",
           R"({"requirements":{"allowedApprovalPolicies":["never",{"granular":{"sandbox_approval":true,"rules":false,)"
           R"("skill_approval":false,"request_permissions":true,"mcp_elicitations":false}}],)"
           R"("allowedApprovalsReviewers":["user","guardian_subagent"],"allowedSandboxModes":["read-only"],)"
           R"("allowedPermissions":[":read"],"allowedWebSearchModes":["cached","live"],"allowManagedHooksOnly":true,)"
           R"("computerUse":{"allowLockedComputerUse":false},"featureRequirements":{"a":true,"b":false},)"
           R"("enforceResidency":"us","network":{"enabled":true,"httpPort":8080,"socksPort":1080,)"
           R"("allowUpstreamProxy":true,"dangerouslyAllowNonLoopbackProxy":false,)"
           R"("dangerouslyAllowAllUnixSockets":false,"domains":{"a.b":"allow","c.d":"deny"},)"
           R"("managedAllowedDomainsOnly":true,"allowedDomains":["a.b"],"deniedDomains":["c.d"],)"
           R"("unixSockets":{"/s":"allow","/t":"none"},"allowUnixSockets":["/s"],"allowLocalBinding":false}}})",
           [](const auto& object) { return object.readConfigRequirements(); }),

    onOrmel(R"({"id":2,"method":"config/value/write","params":{"keyPath":"a.b","value":{"x":[1,null]},)"
            R"("mergeStrategy":"replace"}})",
            R"({"status":"ok"})", "null",
            [](const Ormel& ormel) {
              return ormel.writeConfigValue("a.b", JSONValue::object({{"x", JSONValue::array({1, nullptr})}}),
                                            ConfigMergeStrategy::replace);
            }),
    onOrmel(R"({"id":2,"method":"config/value/write","params":{"keyPath":"","value":null,"mergeStrategy":"upsert",)"
            R"("expectedVersion":"v1"}})",
            "{}", "null",
            [](const Ormel& ormel) {
              WriteConfigValueParams params;
              params.expectedVersion = "v1";
              return ormel.writeConfigValue("", JSONValue(), ConfigMergeStrategy::upsert, params);
            }),
    onOrmel(R"({"id":2,"method":"config/batchWrite","params":{"edits":[]}})", "{}",
            [](const Ormel& ormel) { return ormel.batchWriteConfig({}); }),
    onOrmel(R"({"id":2,"method":"config/batchWrite","params":{"edits":[{"keyPath":"a","value":1,)"
            R"("mergeStrategy":"upsert"},{"keyPath":"b","value":null,"mergeStrategy":"replace"}],"filePath":"/f",)"
            R"("expectedVersion":"v1","reloadUserConfig":false}})",
            R"({"status":"okOverridden","version":"v2","filePath":"/f","overriddenMetadata":{"by":["x"]}})",
            [](const Ormel& ormel) {
              BatchWriteConfigParams params;
              params.filePath = "/f";
              params.expectedVersion = "v1";
              params.reloadUserConfig = false;
              return ormel.batchWriteConfig({ConfigEdit{"a", JSONValue(1), ConfigMergeStrategy::upsert},
                                             ConfigEdit{"b", JSONValue(), ConfigMergeStrategy::replace}},
                                            params);
            }),
    onOrmel(R"({"id":2,"method":"config/batchWrite","params":{"edits":[],"filePath":"","expectedVersion":"",)"
            R"("reloadUserConfig":true}})",
            R"({"status":null})", "{}",
            [](const Ormel& ormel) {
              BatchWriteConfigParams params;
              params.filePath = "";
              params.expectedVersion = "";
              params.reloadUserConfig = true;
              return ormel.batchWriteConfig({}, params);
            }),
    onSession(R"({"id":2,"method":"config/batchWrite","params":{"edits":[{"keyPath":"hooks.state","value":{)"
              R"("a.b \"c\"":{"enabled":true}},"mergeStrategy":"upsert"}],"reloadUserConfig":true}})",
              R"({"status":"ok","version":"v2"})",
              [](const OrmelControlSession& session) { return session.setHookEnabled("a.b \"c\"", true); }),
    onSession(R"({"id":2,"method":"config/batchWrite","params":{"edits":[{"keyPath":"hooks.state","value":{)"
              R"("k":{"enabled":false}},"mergeStrategy":"upsert"}],"reloadUserConfig":true}})",
              "{}", [](const OrmelControlSession& session) { return session.setHookEnabled("k", false); }),

    onOrmel(R"({"id":2,"method":"model/list"})", noData, [](const Ormel& ormel) { return ormel.listModels(); }),
    onOrmel(R"({"id":2,"method":"model/list","params":{"cursor":"c","limit":7,"includeHidden":true}})", pageOfModels,
            [](const Ormel& ormel) {
              ListModelsParams params;
              params.cursor = "c";
              params.limit = 7;
              params.includeHidden = true;
              return ormel.listModels(params);
            }),
    onOrmel(R"({"id":2,"method":"model/list","params":{"cursor":""}})", aModel, aModelRead,
            [](const Ormel& ormel) {
              ListModelsParams params;
              params.cursor = "";
              return ormel.listModels(params);
            }),
    onOrmel(R"({"id":2,"method":"model/list","params":{"limit":0}})", noData,
            [](const Ormel& ormel) {
              ListModelsParams params;
              params.limit = 0;
              return ormel.listModels(params);
            }),
    onOrmel(R"({"id":2,"method":"model/list","params":{"includeHidden":false}})", noData,
            [](const Ormel& ormel) {
              ListModelsParams params;
              params.includeHidden = false;
              return ormel.listModels(params);
            }),
    onSession(R"({"id":2,"method":"model/list","params":{"includeHidden":false}})", aModel, modelsRead,
              [](const OrmelControlSession& session) { return session.listAllModels(); }),
    onSession(R"({"id":2,"method":"model/list","params":{"includeHidden":true}})", noData, "[]",
              [](const OrmelControlSession& session) {
                ListAllModelsParams params;
                params.includeHidden = true;
                return session.listAllModels(params);
              }),
    onOrmel(R"({"id":2,"method":"modelProvider/capabilities/read","params":{}})",
            R"({"namespaceTools":true,"imageGeneration":false,"webSearch":true})",
            [](const Ormel& ormel) { return ormel.readModelProviderCapabilities(); }),
    onOrmel(R"({"id":2,"method":"permissionProfile/list","params":{}})", noData,
            [](const Ormel& ormel) { return ormel.listPermissionProfiles(); }),
    onOrmel(R"({"id":2,"method":"permissionProfile/list","params":{"cursor":"c","limit":7,"cwd":"/a"}})",
            R"({"data":[{"id":":read"},{"id":":write","description":"d","allowed":false}],"nextCursor":"n"})",
            R"({"data":[{"id":":read","allowed":true},{"id":":write","description":"d","allowed":false}],)"
            R"("nextCursor":"n"})",
            [](const Ormel& ormel) {
              ListPermissionProfilesParams params;
              params.cursor = "c";
              params.limit = 7;
              params.cwd = "/a";
              return ormel.listPermissionProfiles(params);
            }),
    onOrmel(R"({"id":2,"method":"permissionProfile/list","params":{"cursor":"","limit":0,"cwd":""}})", noData,
            [](const Ormel& ormel) {
              ListPermissionProfilesParams params;
              params.cursor = "";
              params.limit = 0;
              params.cwd = "";
              return ormel.listPermissionProfiles(params);
            }),
    onSession(R"({"id":2,"method":"permissionProfile/list","params":{}})", profiles, profilesRead,
              [](const OrmelControlSession& session) { return session.listAllPermissionProfiles(); }),
    onSession(R"({"id":2,"method":"permissionProfile/list","params":{"cwd":"/a"}})", noData, "[]",
              [](const OrmelControlSession& session) {
                ListAllPermissionProfilesParams params;
                params.cwd = "/a";
                return session.listAllPermissionProfiles(params);
              }),
    onOrmel(R"({"id":2,"method":"experimentalFeature/list","params":{}})", noData,
            [](const Ormel& ormel) { return ormel.listExperimentalFeatures(); }),
    onOrmel(R"({"id":2,"method":"experimentalFeature/list","params":{"cursor":"c","limit":7,"threadId":"t1"}})",
            R"({"data":[{"name":"a","stage":"beta","displayName":"A","description":"d","announcement":"n",)"
            R"("enabled":true,"defaultEnabled":false},{"name":"b","stage":"","enabled":false,"defaultEnabled":true}],)"
            R"("nextCursor":"n"})",
            [](const Ormel& ormel) {
              ListExperimentalFeaturesParams params;
              params.cursor = "c";
              params.limit = 7;
              params.threadID = "t1";
              return ormel.listExperimentalFeatures(params);
            }),
    onOrmel(R"({"id":2,"method":"experimentalFeature/list","params":{"cursor":"","limit":0,"threadId":""}})", noData,
            [](const Ormel& ormel) {
              ListExperimentalFeaturesParams params;
              params.cursor = "";
              params.limit = 0;
              params.threadID = "";
              return ormel.listExperimentalFeatures(params);
            }),
    onOrmel(R"({"id":2,"method":"experimentalFeature/enablement/set","params":{"enablement":{}}})",
            R"({"enablement":{}})", [](const Ormel& ormel) { return ormel.setExperimentalFeatureEnablement({}); }),
    onOrmel(R"({"id":2,"method":"experimentalFeature/enablement/set","params":{"enablement":{"a":true,"b":false}}})",
            R"({"enablement":{"a":true,"b":false,"c":true}})",
            [](const Ormel& ormel) { return ormel.setExperimentalFeatureEnablement({{"a", true}, {"b", false}}); }),

    onBoth(R"({"id":2,"method":"skills/list","params":{}})", noData,
           [](const auto& object) { return object.listSkills(); }),
    onBoth(R"({"id":2,"method":"skills/list","params":{"cwds":["/a","/b"],"forceReload":true}})",
           R"({"data":[{"cwd":"/a","skills":[{"name":"s","description":"d","path":"/s"},{"name":"t","description":"",)"
           R"("shortDescription":"sd","interface":{"displayName":"T","shortDescription":"x","iconSmall":"i",)"
           R"("iconLarge":"j","brandColor":"#123","defaultPrompt":"p"},"path":"/t","enabled":false}],)"
           R"("errors":[{"path":"/u","message":"bad"}]}]})",
           R"({"data":[{"cwd":"/a","skills":[{"name":"s","description":"d","path":"/s","enabled":true},{"name":"t",)"
           R"("description":"","shortDescription":"sd","interface":{"displayName":"T","shortDescription":"x",)"
           R"("iconSmall":"i","iconLarge":"j","brandColor":"#123","defaultPrompt":"p"},"path":"/t",)"
           R"("enabled":false}],"errors":[{"path":"/u","message":"bad"}]}]})",
           [](const auto& object) {
             ListSkillsParams params;
             params.cwds = {"/a", "/b"};
             params.forceReload = true;
             return object.listSkills(params);
           }),
    onBoth(R"({"id":2,"method":"skills/list","params":{"cwds":[],"forceReload":false}})", noData,
           [](const auto& object) {
             ListSkillsParams params;
             params.cwds.emplace();
             params.forceReload = false;
             return object.listSkills(params);
           }),
    onOrmel(R"({"id":2,"method":"skills/config/write","params":{"enabled":false}})", R"({"effectiveEnabled":true})",
            "null", [](const Ormel& ormel) { return ormel.writeSkillConfig(false); }),
    onOrmel(R"({"id":2,"method":"skills/config/write","params":{"enabled":true,"path":"/s","name":"n"}})", "{}", "null",
            [](const Ormel& ormel) {
              WriteSkillConfigParams params;
              params.path = "/s";
              params.name = "n";
              return ormel.writeSkillConfig(true, params);
            }),
    onOrmel(R"({"id":2,"method":"skills/config/write","params":{"enabled":true,"path":"","name":""}})", "{}", "null",
            [](const Ormel& ormel) {
              WriteSkillConfigParams params;
              params.path = "";
              params.name = "";
              return ormel.writeSkillConfig(true, params);
            }),

    onOrmel(R"({"id":2,"method":"hooks/list","params":{}})", noData,
            [](const Ormel& ormel) { return ormel.listHooks(); }),
    onOrmel(R"({"id":2,"method":"hooks/list","params":{"cwds":["/a","/b"]}})", allHooks, allHooksRead,
            [](const Ormel& ormel) {
              ListHooksParams params;
              params.cwds = {"/a", "/b"};
              return ormel.listHooks(params);
            }),
    onOrmel(R"({"id":2,"method":"hooks/list","params":{"cwds":[]}})", noData,
            [](const Ormel& ormel) {
              ListHooksParams params;
              params.cwds.emplace();
              return ormel.listHooks(params);
            }),
    onSession(R"({"id":2,"method":"hooks/list","params":{"cwds":[]}})", noData,
              [](const OrmelControlSession& session) { return session.listHooks({}); }),
    onSession(R"({"id":2,"method":"hooks/list","params":{"cwds":["/a","/b"]}})", allHooks, allHooksRead,
              [](const OrmelControlSession& session) {
                const std::vector<std::string> cwds = {"/a", "/b"};
                return session.listHooks(cwds);
              }),

    onOrmel(R"({"id":2,"method":"externalAgentConfig/detect","params":{}})", noItems,
            [](const Ormel& ormel) { return ormel.detectExternalAgentConfig(); }),
    onOrmel(R"({"id":2,"method":"externalAgentConfig/detect","params":{"includeHome":true,"cwds":["/a","/b"]}})",
            R"({"items":[{"itemType":"SKILLS","description":"d"},{"itemType":"","description":"e","cwd":"/a",)"
            R"("details":{"n":[1]}}]})",
            R"({"items":[{"itemType":"SKILLS","description":"d","cwd":null,"details":null},{"itemType":"",)"
            R"("description":"e","cwd":"/a","details":{"n":[1]}}]})",
            [](const Ormel& ormel) {
              DetectExternalAgentConfigParams params;
              params.includeHome = true;
              params.cwds = {"/a", "/b"};
              return ormel.detectExternalAgentConfig(params);
            }),
    onOrmel(R"({"id":2,"method":"externalAgentConfig/detect","params":{"includeHome":false,"cwds":[]}})", noItems,
            [](const Ormel& ormel) {
              DetectExternalAgentConfigParams params;
              params.includeHome = false;
              params.cwds.emplace();
              return ormel.detectExternalAgentConfig(params);
            }),
    onOrmel(R"({"id":2,"method":"externalAgentConfig/import","params":{"migrationItems":[]}})", anImport,
            [](const Ormel& ormel) { return ormel.importExternalAgentConfig({}); }),
    onOrmel(R"({"id":2,"method":"externalAgentConfig/import","params":{"migrationItems":[{"itemType":"SKILLS",)"
            R"("description":"d","cwd":null,"details":null},{"itemType":"","description":"","cwd":"/a",)"
            R"("details":{"n":[1]}}],"source":"other"}})",
            anImport,
            [](const Ormel& ormel) {
              ImportExternalAgentConfigParams params;
              params.source = "other";
              ExternalAgentConfigMigrationItem item;
              item.itemType = "SKILLS";
              item.description = "d";
              ExternalAgentConfigMigrationItem whole;
              whole.cwd = "/a";
              whole.details = JSONValue::object({{"n", JSONValue::array({1})}});
              return ormel.importExternalAgentConfig({item, whole}, params);
            }),
    onOrmel(R"({"id":2,"method":"externalAgentConfig/import","params":{"migrationItems":[],"source":""}})", anImport,
            [](const Ormel& ormel) {
              ImportExternalAgentConfigParams params;
              params.source = "";
              return ormel.importExternalAgentConfig({}, params);
            }),
    onOrmel(R"({"id":2,"method":"externalAgentConfig/import/readHistories"})", R"({"data":[]})",
            [](const Ormel& ormel) { return ormel.readExternalAgentConfigImportHistories(); }),
    onOrmel(R"({"id":2,"method":"externalAgentConfig/import/readHistories"})",
            R"({"data":[{"importId":"i","completedAtMs":1700000000000,"successes":[{"a":1}],"failures":[null,"x"]},)"
            R"({"importId":"j","completedAtMs":0,"successes":[],"failures":[]}]})",
            [](const Ormel& ormel) { return ormel.readExternalAgentConfigImportHistories(); }),
};

#undef ORMEL_SMALL_MODEL
#undef ORMEL_SMALL_MODEL_READ
#undef ORMEL_WHOLE_MODEL

TEST(ConfigCalls, GoOutExactly) { expectCalls(configRows); }

TEST(ConfigCalls, FailByTheirRecordAndByTheServersError) { expectFailures(configRows, configRecords); }

TEST(ConfigCalls, NotifyOfExtraRootsOfSkillsWithoutAwaitingAReply) {
  const std::vector<std::vector<std::string>> allRoots = {{}, {"/a", "/b \"c\""}};
  const char* lines[] = {R"({"method":"skills/extraRoots/set","params":{"extraRoots":[]}})",
                         R"({"method":"skills/extraRoots/set","params":{"extraRoots":["/a","/b \"c\""]}})"};
  for (std::size_t row = 0; row < allRoots.size(); ++row) {
    SCOPED_TRACE(lines[row]);
    const SimulatorScenario scenario(std::string(handshake) + "always ignore skills/extraRoots/set\n");
    ormelPlaying(scenario).setSkillExtraRoots(allRoots[row]).get();
    const auto received = scenario.receivedLines();
    ASSERT_EQ(received.size(), 3U);
    EXPECT_EQ(received.back(), lines[row]);
    for (const std::string& text : scenario.failures()) ADD_FAILURE() << text;
  }
}

TEST(ConfigCalls, TellAFailedNotificationAsItIs) {
  const SimulatorScenario scenario("client asks initialize\nserver exits 0\n");
  EXPECT_EQ(failureOf([&] { ormelPlaying(scenario).setSkillExtraRoots({"/a"}).get(); }),
            "stream error: Ormel app-server terminated unexpectedly");
}

}  // namespace
