#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/Records/AppRecords.h"
#include "OrmelSDK/Records/DeviceRecords.h"
#include "OrmelSDK/Records/EmptyResponses.h"
#include "OrmelSDK/Records/ExternalAgentRecords.h"
#include "OrmelSDK/Records/FileRecords.h"
#include "OrmelSDK/Records/HookRecords.h"
#include "OrmelSDK/Records/McpServerRecords.h"
#include "OrmelSDK/Records/ModelRecords.h"
#include "OrmelSDK/Records/PermissionRecords.h"
#include "OrmelSDK/Records/SkillRecords.h"
#include "Support/CodingChecks.h"

namespace {

using namespace ormel;

template <typename Record>
JSONValue readAndWritten(std::string_view text) {
  return encode(tests::decoded<Record>(text));
}

/// A reply as it comes, and as it is written again: with the defaults filled in, under the first keys.
struct ManagementReply {
  JSONValue (*readAndWritten)(std::string_view text);
  std::string_view read;
  std::string_view written;
};

const ManagementReply managementReplies[] = {
    {readAndWritten<HookMetadata>,
     R"({"key":"k","eventName":"futureEvent","handlerType":"futureType","timeoutSec":60,"sourcePath":"/h",
         "source":"legacy_managed_config_file","displayOrder":0,"enabled":true,"isManaged":false})",
     R"({"key":"k","eventName":"futureEvent","handlerType":"futureType","timeoutSec":60,"sourcePath":"/h",
         "source":"legacyManagedConfigFile","displayOrder":0,"enabled":true,"isManaged":false,
         "currentHash":"","trustStatus":"untrusted"})"},
    {readAndWritten<HooksListEntry>, R"({"cwd":"/w"})", R"({"cwd":"/w","hooks":[],"warnings":[],"errors":[]})"},
    {readAndWritten<SkillSummary>, R"({"name":"n","description":"d","path":"/s"})",
     R"({"name":"n","description":"d","path":"/s","enabled":true})"},
    {readAndWritten<AppInfo>, R"({"id":"a","name":"n"})",
     R"({"id":"a","name":"n","isAccessible":false,"isEnabled":false,"pluginDisplayNames":[]})"},
    {readAndWritten<AppToolSummary>, R"({"name":"n","description":"d"})",
     R"({"name":"n","description":"d","isEnabled":true,"isReadOnly":false})"},
    {readAndWritten<McpServerToolCallResponse>, R"({"content":[],"structured_content":{"rows":[null]}})",
     R"({"content":[],"structuredContent":{"rows":[null]}})"},
    {readAndWritten<McpServerToolCallResponse>,
     R"({"content":[],"structured_content":1,"structuredContent":2,"_meta":{"m":null}})",
     R"({"content":[],"structuredContent":2,"_meta":{"m":null}})"},
    {readAndWritten<McpServerToolCallResponse>,
     R"({"content":[],"structured_content":1,"structuredContent":null,"_meta":null,"isError":null})",
     R"({"content":[],"structuredContent":1})"},
    {readAndWritten<ExternalAgentConfigMigrationItem>, R"({"itemType":"t","description":"d"})",
     R"({"itemType":"t","description":"d","cwd":null,"details":null})"},
    {readAndWritten<ExternalAgentConfigMigrationItem>,
     R"({"itemType":"t","description":"d","cwd":null,"details":{"count":2}})",
     R"({"itemType":"t","description":"d","cwd":null,"details":{"count":2}})"},
    {readAndWritten<FsReadDirectoryResponse>,
     R"({"entries":[{"fileName":"d","isDirectory":true,"isFile":false},
                    {"fileName":"f","isKestriony":false,"isDirectory":true,"isFile":true}]})",
     R"({"entries":[{"fileName":"d","isKestriony":true,"isFile":false},
                    {"fileName":"f","isKestriony":false,"isFile":true}]})"},
    {readAndWritten<FsGetMetadataResponse>,
     R"({"isDirectory":true,"isFile":false,"isSymlink":true,"createdAtMs":1.5,"modifiedAtMs":1700000000000})",
     R"({"isKestriony":true,"isFile":false,"isSymlink":true,"createdAtMs":1.5,"modifiedAtMs":1700000000000})"},
    {readAndWritten<PermissionProfileSummary>, R"({"id":"p","allowed":null})", R"({"id":"p","allowed":true})"},
    {readAndWritten<EnvironmentAddResponse>, R"({"future":[1]})", "{}"},
};

TEST(ManagementRecords, FillInWhatAReplyLeavesOut) {
  for (const auto& reply : managementReplies) {
    EXPECT_EQ(reply.readAndWritten(reply.read), JSONValue::decode(reply.written)) << reply.read;
  }
}

/// A model with all that it must have, and `member` in front.
std::string modelWith(std::string_view member) {
  return "{" + std::string(member) +
         R"("id":"m","model":"m-1","displayName":"M","description":"d","hidden":false,
            "supportedReasoningEfforts":[{"reasoningEffort":"low","description":"d"}],"defaultReasoningEffort":"low",
            "inputModalities":["text","smell"],"supportsPersonality":true,"isDefault":true})";
}

TEST(ManagementRecords, ReadAModelOfAServerThatTellsNoTiers) {
  const auto model = tests::decoded<OrmelModelDescriptor>(modelWith(""));
  EXPECT_TRUE(model.serviceTiers.empty());
  EXPECT_TRUE(model.additionalSpeedTiers.empty());
  EXPECT_EQ(model.inputModalities, (std::vector{ModelInputModality::text, ModelInputModality("smell")}));
}

TEST(ManagementRecords, FailAsAWholeWhenOneElementDoes) {
  const std::string page = R"({"data":[)" + modelWith("") + R"(,{"id":"m"}]})";
  EXPECT_EQ(tests::failureOf<ModelListResponse>(page), "No value is associated with the key 'model'.");
  EXPECT_EQ(tests::failureOf<HooksListResponse>(R"({"data":[{"cwd":"/w","errors":[{"path":"/h"}]}]})"),
            "No value is associated with the key 'message'.");
  EXPECT_EQ(tests::failureOf<SkillsListResponse>(R"({"data":[{"cwd":"/w","skills":[]}]})"),
            "No value is associated with the key 'errors'.");
  EXPECT_EQ(tests::failureOf<AppsReadResponse>(R"({"apps":[]})"),
            "No value is associated with the key 'missingAppIds'.");
}

TEST(ManagementRecords, HaveAConstantForEachWordThatTheServerHasToday) {
  tests::checkVocabulary<McpAuthStatus>({{McpAuthStatus::unsupported, "unsupported"},
                                         {McpAuthStatus::notLoggedIn, "notLoggedIn"},
                                         {McpAuthStatus::bearerToken, "bearerToken"},
                                         {McpAuthStatus::oAuth, "oAuth"}});
  tests::checkVocabulary<McpServerRuntimeStatus>(
      {{McpServerRuntimeStatus::notStarted, "notStarted"},
       {McpServerRuntimeStatus::starting, "starting"},
       {McpServerRuntimeStatus::connected, "connected"},
       {McpServerRuntimeStatus::authenticationRequired, "authenticationRequired"},
       {McpServerRuntimeStatus::failed, "failed"},
       {McpServerRuntimeStatus::cancelled, "cancelled"},
       {McpServerRuntimeStatus::disabled, "disabled"}});
  tests::checkVocabulary<ModelInputModality>(
      {{ModelInputModality::text, "text"}, {ModelInputModality::image, "image"}, {ModelInputModality::audio, "audio"}});
  tests::checkVocabulary<ModelMultiAgentVersion>({{ModelMultiAgentVersion::disabled, "disabled"}});
}

TEST(ManagementRecords, HaveAWordForEachCase) {
  using Connection = RemoteControlConnectionStatus;
  tests::checkWords<Connection>({{Connection::disabled, "disabled"},
                                 {Connection::connecting, "connecting"},
                                 {Connection::connected, "connected"},
                                 {Connection::errored, "errored"}});
  tests::checkWords<WindowsSandboxReadiness>({{WindowsSandboxReadiness::ready, "ready"},
                                              {WindowsSandboxReadiness::notConfigured, "notConfigured"},
                                              {WindowsSandboxReadiness::updateRequired, "updateRequired"}});
  tests::checkWords<DeviceKeyAlgorithm>({{DeviceKeyAlgorithm::ecdsaP256SHA256, "ecdsa_p256_sha256"}});
  using Protection = DeviceKeyProtectionClass;
  tests::checkWords<Protection>({{Protection::hardwareSecureEnclave, "hardware_secure_enclave"},
                                 {Protection::hardwareTPM, "hardware_tpm"},
                                 {Protection::osProtectedNonextractable, "os_protected_nonextractable"}});
}

TEST(ManagementRecords, ReadNoOtherWordOfAClosedEnumeration) {
  tests::checkStrictness<RemoteControlConnectionStatus>("RemoteControlConnectionStatus", {"Connected", "paused", ""});
  tests::checkStrictness<WindowsSandboxReadiness>("WindowsSandboxReadiness", {"not_configured", "broken"});
  tests::checkStrictness<DeviceKeyAlgorithm>("DeviceKeyAlgorithm", {"ecdsaP256SHA256", "ed25519"});
  tests::checkStrictness<DeviceKeyProtectionClass>("DeviceKeyProtectionClass", {"hardwareTPM", "none"});
}

}  // namespace
