#include "OrmelSDK/Management/StableCapabilityManifest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include "OrmelSDK/Management/UpstreamBaseline.h"
#include "Support/CodingChecks.h"

namespace {

using namespace ormel;
using Manifest = OrmelStableCapabilityManifest;
using Entry = OrmelCapabilityManifestEntry;

static_assert(!std::is_default_constructible_v<Manifest>);
static_assert(!std::is_default_constructible_v<OrmelSDKUpstreamBaseline>);

constexpr std::string_view individualEntries[] = {
    R"({"method":"initialize","stability":"stable","sdkStatus":"implemented","kestrionStatus":"implemented","uiStatus":"notApplicable","testStatus":"integrationTested"})",
    R"({"method":"item/commandExecution/requestApproval","stability":"stable","sdkStatus":"implemented","kestrionStatus":"implemented","uiStatus":"implemented","testStatus":"integrationTested"})",
    R"({"method":"item/fileChange/requestApproval","stability":"stable","sdkStatus":"implemented","kestrionStatus":"implemented","uiStatus":"implemented","testStatus":"integrationTested"})",
    R"({"method":"item/permissions/requestApproval","stability":"stable","sdkStatus":"implemented","kestrionStatus":"implemented","uiStatus":"implemented","testStatus":"integrationTested"})",
    R"({"method":"serverRequest/resolved","stability":"stable","sdkStatus":"implemented","kestrionStatus":"implemented","uiStatus":"notApplicable","testStatus":"integrationTested"})",
    R"({"method":"mcpServer/elicitation/request","stability":"stable","sdkStatus":"implemented","kestrionStatus":"implemented","uiStatus":"implemented","testStatus":"integrationTested"})",
    R"({"method":"attestation/generate","stability":"stable","sdkStatus":"implemented","kestrionStatus":"notIntegrated","uiStatus":"notApplicable","testStatus":"integrationTested"})",
    R"({"method":"model/list","stability":"stable","sdkStatus":"implemented","kestrionStatus":"implemented","uiStatus":"implemented","testStatus":"integrationTested"})",
    R"({"method":"permissionProfile/list","stability":"stable","sdkStatus":"implemented","kestrionStatus":"implemented","uiStatus":"implemented","testStatus":"integrationTested"})",
    R"({"method":"configRequirements/read","stability":"stable","sdkStatus":"implemented","kestrionStatus":"implemented","uiStatus":"implemented","testStatus":"integrationTested"})",
    R"({"method":"thread/items/list","stability":"experimental","sdkStatus":"compatibilityOnly","kestrionStatus":"notExposed","uiStatus":"notExposed","testStatus":"integrationTested"})",
    R"({"method":"thread/turns/items/list","stability":"legacy","sdkStatus":"compatibilityOnly","kestrionStatus":"notExposed","uiStatus":"notExposed","testStatus":"integrationTested"})",
    R"({"method":"app/read","stability":"stable","sdkStatus":"implemented","kestrionStatus":"notIntegrated","uiStatus":"notExposed","testStatus":"integrationTested"})",
};

constexpr std::string_view fullyIntegratedMethods[] = {
    "app/list",
    "app/installed",
    "app/list/updated",
    "skills/list",
    "skills/extraRoots/set",
    "skills/changed",
    "plugin/list",
    "plugin/installed",
    "plugin/read",
    "plugin/install",
    "plugin/uninstall",
    "mcpServerStatus/list",
    "mcpServer/oauth/login",
    "mcpServer/oauthLogin/completed",
    "mcpServer/startupStatus/updated",
    "config/mcpServer/reload",
    "hooks/list",
    "config/batchWrite",
    "account/read",
    "account/login/start",
    "account/login/cancel",
    "account/login/completed",
    "account/logout",
    "account/rateLimits/read",
    "account/rateLimits/updated",
    "modelProvider/authRecoveryStarted",
    "modelProvider/authRecoveryCompleted",
    "autoApprovalReview/strictReviewRequired",
    "deprecationNotice",
    "configWarning",
    "account/rateLimitResetCredit/consume",
    "account/usage/read",
    "account/workspaceMessages/read",
    "account/sendAddCreditsNudgeEmail",
    "account/updated",
    "thread/fork",
    "thread/archive",
    "thread/delete",
    "thread/unarchive",
    "thread/name/set",
    "thread/compact/start",
    "review/start",
    "feedback/upload",
};

std::vector<Entry> expectedEntries() {
  std::vector<Entry> entries;
  for (const auto text : individualEntries) entries.push_back(tests::decoded<Entry>(text));
  for (const auto method : fullyIntegratedMethods) {
    const auto status = OrmelCapabilityStatus::implemented;
    entries.push_back({std::string(method), OrmelCapabilityStability::stable, status, status, status,
                       OrmelCapabilityTestStatus::integrationTested});
  }
  return entries;
}

TEST(StableCapabilityManifest, HasItsRowsInOrder) {
  EXPECT_EQ(Manifest::entries(), expectedEntries());
  EXPECT_EQ(Manifest::entries().size(), 56u);
  EXPECT_EQ(&Manifest::entries(), &Manifest::entries()) << "built anew";
}

TEST(StableCapabilityManifest, FindsARowByItsExactNameOnly) {
  for (const auto& entry : Manifest::entries()) EXPECT_EQ(Manifest::entry(entry.method), entry);
  for (const char* method : {"thread/rollback", "", "MODEL/LIST", "Model/list", "model/list ", "model"}) {
    EXPECT_EQ(Manifest::entry(method), std::nullopt) << method;
  }
  const auto items = Manifest::entry("thread/items/list");
  ASSERT_TRUE(items);
  EXPECT_EQ(items->stability, OrmelCapabilityStability::experimental);
  EXPECT_EQ(items->sdkStatus, OrmelCapabilityStatus::compatibilityOnly);
}

TEST(StableCapabilityManifest, HasATokenForEachMethodThatIsMoreThanCompatible) {
  std::vector<std::string_view> expected;
  const auto entries = expectedEntries();
  for (std::size_t row = 0; row < 10; ++row) expected.push_back(entries[row].method);
  for (const char* app : {"app/list", "app/installed", "app/read"}) expected.push_back(app);
  for (const auto method : fullyIntegratedMethods) {
    if (std::ranges::find(expected, method) == expected.end()) expected.push_back(method);
  }
  const auto tokens = Manifest::stableSchemaTokens();
  EXPECT_EQ(std::vector(tokens.begin(), tokens.end()), expected);
  EXPECT_EQ(tokens.size(), 54u);
  std::set<std::string_view> fromEntries;
  for (const auto& entry : entries) {
    if (entry.sdkStatus != OrmelCapabilityStatus::compatibilityOnly) fromEntries.insert(entry.method);
  }
  EXPECT_EQ(std::set(tokens.begin(), tokens.end()), fromEntries);
}

TEST(CapabilityManifestEntry, IsWrittenUnderItsFieldsNamesAndReadBack) {
  const Entry entry{"m",
                    OrmelCapabilityStability::legacy,
                    OrmelCapabilityStatus::compatibilityOnly,
                    OrmelCapabilityStatus::notIntegrated,
                    OrmelCapabilityStatus::notApplicable,
                    OrmelCapabilityTestStatus::unitTested};
  tests::expectWritten(entry, R"({"method":"m","stability":"legacy","sdkStatus":"compatibilityOnly",
    "kestrionStatus":"notIntegrated","uiStatus":"notApplicable","testStatus":"unitTested"})");
  for (const auto& row : Manifest::entries()) EXPECT_EQ(decode<Entry>(encode(row)), row);
}

TEST(CapabilityManifestEntry, IsReadOnlyWholeAndInKnownWords) {
  const JSONValue whole = JSONValue::decode(individualEntries[0]);
  for (const auto& [without, ignored] : *whole.objectValue()) {
    std::vector<JSONMemberInit> fewer;
    std::vector<JSONMemberInit> foreign;
    for (const auto& [key, value] : *whole.objectValue()) {
      if (key != without) fewer.emplace_back(key, value);
      foreign.emplace_back(key, key == without ? JSONValue("future") : value);
    }
    EXPECT_THROW((void)decode<Entry>(JSONValue::object(fewer)), DecodingError) << without;
    if (without == "method") continue;
    EXPECT_THROW((void)decode<Entry>(JSONValue::object(foreign)), DecodingError) << without;
  }
  tests::checkWords<OrmelCapabilityStatus>({{OrmelCapabilityStatus::implemented, "implemented"},
                                            {OrmelCapabilityStatus::compatibilityOnly, "compatibilityOnly"},
                                            {OrmelCapabilityStatus::notIntegrated, "notIntegrated"},
                                            {OrmelCapabilityStatus::notExposed, "notExposed"},
                                            {OrmelCapabilityStatus::notApplicable, "notApplicable"}});
  tests::checkWords<OrmelCapabilityStability>({{OrmelCapabilityStability::stable, "stable"},
                                               {OrmelCapabilityStability::experimental, "experimental"},
                                               {OrmelCapabilityStability::legacy, "legacy"}});
  tests::checkWords<OrmelCapabilityTestStatus>({{OrmelCapabilityTestStatus::integrationTested, "integrationTested"},
                                                {OrmelCapabilityTestStatus::unitTested, "unitTested"},
                                                {OrmelCapabilityTestStatus::notTested, "notTested"}});
}

TEST(CapabilityManifestEntry, IsHashedByAllItsFields) {
  const Entry entry = *Manifest::entry("initialize");
  std::vector<Entry> variations(7, entry);
  variations[1].method = "other";
  variations[2].stability = OrmelCapabilityStability::legacy;
  variations[3].sdkStatus = OrmelCapabilityStatus::notExposed;
  variations[4].kestrionStatus = OrmelCapabilityStatus::notExposed;
  variations[5].uiStatus = OrmelCapabilityStatus::notExposed;
  variations[6].testStatus = OrmelCapabilityTestStatus::notTested;
  std::set<std::size_t> hashes;
  for (const auto& variation : variations) hashes.insert(std::hash<Entry>()(variation));
  EXPECT_EQ(hashes.size(), variations.size());
  EXPECT_EQ(std::hash<Entry>()(Entry(entry)), std::hash<Entry>()(entry));
  EXPECT_EQ(std::unordered_set<Entry>(variations.begin(), variations.end()).size(), variations.size());
}

}  // namespace
