#include "OrmelSDK/Records/ConfigRecords.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Support/CodingChecks.h"

namespace {

using namespace ormel;

constexpr AppConfigSnapshot on{true, std::nullopt};
constexpr AppConfigSnapshot reviewed{false, ApprovalsReviewer::autoReview};

TEST(AppsConfigSnapshot, TellsTheDefaultFromTheApps) {
  const std::pair<std::string_view, AppsConfigSnapshot> rows[] = {
      {"{}", {}},
      {R"({"_default":null})", {}},
      {R"({"_default":{"enabled":true}})", {on, {}}},
      {R"({"a":{"enabled":true},"_default":{"enabled":false,"approvals_reviewer":"auto_review"}})",
       {reviewed, {{"a", on}}}},
      {R"({"default":{"enabled":true},"_Default":{"enabled":true},"":{"enabled":true}})",
       {std::nullopt, {{"", on}, {"_Default", on}, {"default", on}}}},
  };
  for (const auto& [text, expected] : rows) {
    const auto snapshot = tests::decoded<AppsConfigSnapshot>(text);
    EXPECT_EQ(snapshot, expected) << text;
    EXPECT_EQ(decode<AppsConfigSnapshot>(encode(snapshot)), snapshot) << text;
  }
}

TEST(AppsConfigSnapshot, WritesTheDefaultAheadOfTheAppsInTheOrderOfTheirKeys) {
  const AppsConfigSnapshot snapshot{reviewed, {{"b", on}, {"Z", on}, {"a", reviewed}}};
  std::string keys;
  const JSONValue written = encode(snapshot);
  for (const auto& [key, value] : *written.objectValue()) keys += std::string(key) + ' ';
  EXPECT_EQ(keys, "_default Z a b ");
  EXPECT_EQ(encode(decode<AppsConfigSnapshot>(written)).encode(), written.encode());
  tests::expectWritten(snapshot, R"({"_default":{"enabled":false,"approvalsReviewer":"auto_review"},
    "Z":{"enabled":true},"a":{"enabled":false,"approvalsReviewer":"auto_review"},"b":{"enabled":true}})");
}

TEST(AppsConfigSnapshot, FailsForOneEntryThatCannotBeRead) {
  const std::pair<std::string_view, std::vector<std::string>> rows[] = {
      {R"({"a":{"enabled":true},"b":{}})", {"b"}},
      {R"({"a":null})", {"a"}},
      {R"({"_default":{}})", {"_default"}},
      {R"({"_default":1})", {"_default"}},
      {R"({"a":{"enabled":true,"approvalsReviewer":"nobody"}})", {"a", "approvalsReviewer"}},
  };
  for (const auto& [text, path] : rows) {
    const auto error = tests::errorIn<AppsConfigSnapshot>(JSONValue::decode(text));
    ASSERT_TRUE(error) << text;
    EXPECT_EQ(error->context().codingPath, path) << text;
  }
  EXPECT_EQ(tests::failureOf<AppsConfigSnapshot>("[]"), "Expected AppsConfigSnapshot but found an array.");
}

TEST(DynamicCodingKey, IsATextAndNeverAnInteger) {
  const DynamicCodingKey key("12");
  EXPECT_EQ(key.stringValue, "12");
  EXPECT_EQ(key.intValue, std::nullopt);
  EXPECT_EQ(DynamicCodingKey::fromInteger(12), std::nullopt);
  EXPECT_EQ(tests::printed(key), "12");
}

TEST(ConfigRequirements, ReadPoliciesInEitherForm) {
  const auto requirements = tests::decoded<ConfigRequirements>(
      R"({"allowedApprovalPolicies":["never",{"granular":{"sandbox_approval":true,"rules":false,)"
      R"("skill_approval":false,"request_permissions":true,"mcp_elicitations":false}}]})");
  ASSERT_EQ(requirements.allowedApprovalPolicies.value().size(), 2u);
  EXPECT_EQ(requirements.allowedApprovalPolicies->front(), ApprovalMode::never);
  EXPECT_EQ(requirements.allowedApprovalPolicies->back(), ApprovalMode::granular({true, false, false, true, false}));
  EXPECT_EQ(tests::failureOf<ConfigRequirements>(R"({"allowedApprovalPolicies":["never","sometimes"]})"),
            "Unsupported approval policy");
}

}  // namespace
