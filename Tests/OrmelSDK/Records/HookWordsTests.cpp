#include "OrmelSDK/Records/HookWords.h"

#include <gtest/gtest.h>

#include "Support/CodingChecks.h"

namespace {

using namespace ormel;

TEST(HookEventName, KeepsNamesThatItDoesNotKnow) {
  tests::checkVocabulary<HookEventName>({{HookEventName::preToolUse, "preToolUse"},
                                         {HookEventName::permissionRequest, "permissionRequest"},
                                         {HookEventName::postToolUse, "postToolUse"},
                                         {HookEventName::preCompact, "preCompact"},
                                         {HookEventName::postCompact, "postCompact"},
                                         {HookEventName::sessionStart, "sessionStart"},
                                         {HookEventName::sessionEnd, "sessionEnd"},
                                         {HookEventName::userPromptSubmit, "userPromptSubmit"},
                                         {HookEventName::subagentStart, "subagentStart"},
                                         {HookEventName::subagentStop, "subagentStop"},
                                         {HookEventName::interrupt, "interrupt"},
                                         {HookEventName::mcpTool, "mcpTool"},
                                         {HookEventName::stop, "stop"}});
  EXPECT_EQ(encode(decode<HookEventName>(JSONValue("futureEvent"))), JSONValue("futureEvent"));
}

TEST(HookHandlerType, KeepsNamesThatItDoesNotKnow) {
  tests::checkVocabulary<HookHandlerType>({{HookHandlerType::command, "command"},
                                           {HookHandlerType::prompt, "prompt"},
                                           {HookHandlerType::agent, "agent"},
                                           {HookHandlerType::mcpTool, "mcpTool"}});
}

TEST(HookTrustStatus, IsClosed) {
  tests::checkWords<HookTrustStatus>({{HookTrustStatus::managed, "managed"},
                                      {HookTrustStatus::untrusted, "untrusted"},
                                      {HookTrustStatus::trusted, "trusted"},
                                      {HookTrustStatus::modified, "modified"}});
  tests::checkStrictness<HookTrustStatus>("HookTrustStatus", {"Trusted", "weird"});
}

TEST(HookSource, HasAWordForEachCase) {
  tests::checkWords<HookSource>({{HookSource::system, "system"},
                                 {HookSource::user, "user"},
                                 {HookSource::project, "project"},
                                 {HookSource::mdm, "mdm"},
                                 {HookSource::sessionFlags, "sessionFlags"},
                                 {HookSource::plugin, "plugin"},
                                 {HookSource::cloudRequirements, "cloudRequirements"},
                                 {HookSource::cloudManagedConfig, "cloudManagedConfig"},
                                 {HookSource::legacyManagedConfigFile, "legacyManagedConfigFile"},
                                 {HookSource::legacyManagedConfigMdm, "legacyManagedConfigMdm"},
                                 {HookSource::unknown, "unknown"}});
}

TEST(HookSource, IsReadInAnySpellingAndNeverFailsOnAText) {
  tests::checkTolerance<HookSource>({{"legacy_managed_config_file", HookSource::legacyManagedConfigFile},
                                     {"LEGACY-MANAGED-CONFIG-MDM", HookSource::legacyManagedConfigMdm},
                                     {"session_flags", HookSource::sessionFlags},
                                     {"cloud-requirements", HookSource::cloudRequirements},
                                     {" CloudManagedConfig\n", HookSource::cloudManagedConfig},
                                     {"MDM", HookSource::mdm},
                                     {"elsewhere", HookSource::unknown},
                                     {"", HookSource::unknown}});
}

}  // namespace
