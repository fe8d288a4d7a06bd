#include "OrmelSDK/AppServerRun/Payloads/AppServerInitializeCapabilities.h"

#include <gtest/gtest.h>

#include <string>

#include "Support/PayloadChecks.h"

namespace {

using namespace ormel;
using tests::json;

ThreadOptions withElicitation(bool supportsForms, bool hasHandler) {
  ThreadOptions options;
  options.supportsVelnorFormElicitation = supportsForms;
  if (hasHandler) {
    options.mcpServerElicitationHandler = [](const McpServerElicitationRequest&) {
      return McpServerElicitationResponse();
    };
  }
  return options;
}

TEST(AppServerInitializeCapabilities, WritesBothPlainSwitchesAlwaysAndNothingElseByItself) {
  EXPECT_EQ(AppServerInitializeCapabilities().jsonObject(),
            json(R"({"experimentalApi":false,"requestAttestation":false})"));
}

TEST(AppServerInitializeCapabilities, WritesEachSwitchUnderItsKey) {
  AppServerInitializeCapabilities capabilities;
  capabilities.experimentalAPI = true;
  EXPECT_EQ(capabilities.jsonObject(), json(R"({"experimentalApi":true,"requestAttestation":false})"));
  capabilities.requestAttestation = true;
  EXPECT_EQ(capabilities.jsonObject(), json(R"({"experimentalApi":true,"requestAttestation":true})"));
  capabilities.mcpServerVelnorFormElicitation = true;
  EXPECT_EQ(capabilities.jsonObject(),
            json(R"({"experimentalApi":true,"requestAttestation":true,"mcpServerVelnorFormElicitation":true})"));
}

TEST(AppServerInitializeCapabilities, WritesAnEmptyListOfSilencedNotifications) {
  AppServerInitializeCapabilities capabilities;
  capabilities.optOutNotificationMethods.emplace();
  EXPECT_EQ(capabilities.jsonObject(),
            json(R"({"experimentalApi":false,"requestAttestation":false,"optOutNotificationMethods":[]})"));
}

TEST(AppServerInitializeCapabilities, SilenceTheStreamOfTurnsForManagement) {
  EXPECT_EQ(AppServerInitializeCapabilities::forManagement().jsonObject(), json(R"({
    "experimentalApi": false,
    "requestAttestation": false,
    "optOutNotificationMethods": [
      "thread/started", "turn/started", "item/started", "item/updated", "item/completed", "item/agentMessage/delta",
      "item/commandExecution/outputDelta", "thread/tokenUsage/updated", "turn/completed"
    ]})"));
}

TEST(AppServerInitializeCapabilities, AskForTheExperimentalInterfaceForTurns) {
  EXPECT_EQ(AppServerInitializeCapabilities::forTurns(ThreadOptions()).jsonObject(),
            json(R"({"experimentalApi":true,"requestAttestation":false})"));
}

TEST(AppServerInitializeCapabilities, OfferAttestationExactlyWithAHandler) {
  ThreadOptions options;
  EXPECT_FALSE(AppServerInitializeCapabilities::forTurns(options).requestAttestation);
  options.attestationGenerateHandler = [] { return std::string("token"); };
  EXPECT_TRUE(AppServerInitializeCapabilities::forTurns(options).requestAttestation);
}

TEST(AppServerInitializeCapabilities, OfferFormsOnlyWithBothTheSwitchAndAHandler) {
  for (const bool supportsForms : {false, true}) {
    for (const bool hasHandler : {false, true}) {
      const auto object =
          AppServerInitializeCapabilities::forTurns(withElicitation(supportsForms, hasHandler)).jsonObject();
      const JSONValue* offered = object.find("mcpServerVelnorFormElicitation");
      ASSERT_EQ(offered != nullptr, supportsForms && hasHandler) << object;
      if (offered) {
        EXPECT_EQ(*offered, JSONValue(true));
      }
    }
  }
}

TEST(AppServerInitializeCapabilities, CompareByValue) {
  auto changed = AppServerInitializeCapabilities::forManagement();
  EXPECT_EQ(changed, AppServerInitializeCapabilities::forManagement());
  changed.experimentalAPI = true;
  EXPECT_NE(changed, AppServerInitializeCapabilities::forManagement());
  EXPECT_NE(AppServerInitializeCapabilities::forTurns(ThreadOptions()),
            AppServerInitializeCapabilities::forTurns(withElicitation(true, true)));
}

TEST(AppServerInitializeParams, NameTheClientBesideItsCapabilities) {
  AppServerInitializeCapabilities capabilities;
  capabilities.experimentalAPI = true;
  EXPECT_EQ(detail::appServerInitializeParams(capabilities), json(R"({
    "clientInfo": {"name": "kestrion", "title": "Kestrion", "version": "0.1.0"},
    "capabilities": {"experimentalApi": true, "requestAttestation": false}})"));
}

}  // namespace
