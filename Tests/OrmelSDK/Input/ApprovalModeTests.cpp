#include "OrmelSDK/Input/ApprovalMode.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/Coding/Codec.h"
#include "OrmelSDK/Handlers/ApprovalDecision.h"
#include "OrmelSDK/Handlers/PermissionProfile.h"
#include "Support/CodingChecks.h"

namespace {

using namespace ormel;

constexpr std::string_view granularText =
    R"({"sandbox_approval":true,"rules":false,"skill_approval":false,"request_permissions":true,)"
    R"("mcp_elicitations":false})";
constexpr GranularApprovalMode granularMode{true, false, false, true, false};

JSONValue granularObject() { return JSONValue::object({{"granular", JSONValue::decode(granularText)}}); }

TEST(ApprovalMode, HasOneRawValuePerCase) {
  EXPECT_EQ(ApprovalMode::granular(granularMode).rawValue(), "granular");
  EXPECT_EQ(ApprovalMode::never.rawValue(), "never");
  EXPECT_EQ(ApprovalMode::onRequest.rawValue(), "on-request");
  EXPECT_EQ(ApprovalMode::onFailure.rawValue(), "on-failure");
  EXPECT_EQ(ApprovalMode::untrusted.rawValue(), "untrusted");
}

TEST(ApprovalMode, ReadsRawValues) {
  EXPECT_EQ(ApprovalMode::fromRawValue("never"), ApprovalMode::never);
  EXPECT_EQ(ApprovalMode::fromRawValue("on-request"), ApprovalMode::onRequest);
  EXPECT_EQ(ApprovalMode::fromRawValue("on-failure"), ApprovalMode::onRequest);
  EXPECT_EQ(ApprovalMode::fromRawValue("untrusted"), ApprovalMode::untrusted);
  for (const std::string_view word : {"granular", "", "Never", " never", "on_request"}) {
    EXPECT_EQ(ApprovalMode::fromRawValue(word), std::nullopt) << word;
  }
}

TEST(ApprovalMode, SendsTheRetiredPolicyAsItsSuccessor) {
  EXPECT_EQ(ApprovalMode::onFailure.jsonValue(), JSONValue("on-request"));
  EXPECT_EQ(ApprovalMode::onRequest.jsonValue(), JSONValue("on-request"));
  EXPECT_EQ(ApprovalMode::never.jsonValue(), JSONValue("never"));
  EXPECT_EQ(ApprovalMode::untrusted.jsonValue(), JSONValue("untrusted"));
  EXPECT_EQ(ApprovalMode::granular(granularMode).jsonValue(), granularObject());
}

TEST(ApprovalMode, IsWrittenByItsRawValueOrAsAnObject) {
  EXPECT_EQ(encode(ApprovalMode::onFailure), JSONValue("on-failure"));
  EXPECT_EQ(encode(ApprovalMode::onRequest), JSONValue("on-request"));
  EXPECT_EQ(encode(ApprovalMode::never), JSONValue("never"));
  EXPECT_EQ(encode(ApprovalMode::untrusted), JSONValue("untrusted"));
  EXPECT_EQ(encode(ApprovalMode::granular(granularMode)), granularObject());
}

TEST(ApprovalMode, RefusesAnObjectWithAMemberThatIsNoMode) {
  const JSONValue mixed =
      JSONValue::object({{"granular", JSONValue::decode(granularText)}, {"note", JSONValue("text")}});
  EXPECT_EQ(tests::failureOf<ApprovalMode>(mixed.encode()), "Unsupported approval policy");
  const JSONValue twoModes =
      JSONValue::object({{"granular", JSONValue::decode(granularText)}, {"other", JSONValue::decode(granularText)}});
  EXPECT_EQ(decode<ApprovalMode>(twoModes), ApprovalMode::granular(granularMode));
}

TEST(ApprovalMode, ComparesByValue) {
  EXPECT_NE(ApprovalMode::onFailure, ApprovalMode::onRequest);
  EXPECT_NE(ApprovalMode::granular(granularMode), ApprovalMode::granular({}));
  EXPECT_NE(ApprovalMode::granular({}), ApprovalMode::never);
}

TEST(ApprovalMode, StreamsInOneReadableLine) {
  std::ostringstream stream;
  stream << ApprovalMode::onFailure;
  EXPECT_EQ(stream.str(), R"(ApprovalMode "on-failure")");
}

TEST(PermissionProfile, IsReadUnderBothSpellings) {
  RequestPermissionProfile expected;
  expected.fileSystem = JSONValue(1);
  for (const std::string_view text :
       {R"({"fileSystem":1})", R"({"file_system":1})", R"({"fileSystem":1,"file_system":2})"}) {
    const JSONValue object = JSONValue::decode(text);
    const RequestPermissionProfile profile = decodePermissionProfile(*object.objectValue());
    EXPECT_EQ(profile, expected) << text;
    EXPECT_EQ(permissionProfileJSONObject(profile), JSONValue::decode(R"({"fileSystem":1})")) << text;
  }
}

TEST(PermissionProfile, KeepsAnyValueWhole) {
  const JSONValue object = JSONValue::decode(R"({"network":null,"file_system":[{"x":[1,null]}],"other":1})");
  const RequestPermissionProfile profile = decodePermissionProfile(*object.objectValue());
  EXPECT_EQ(profile.network, JSONValue());
  EXPECT_EQ(profile.fileSystem, JSONValue::decode(R"([{"x":[1,null]}])"));
}

TEST(PermissionProfile, IsAnEmptyObjectWhenEmpty) {
  const JSONValue empty = JSONValue::object();
  EXPECT_EQ(decodePermissionProfile(*empty.objectValue()), RequestPermissionProfile());
  EXPECT_EQ(permissionProfileJSONObject(RequestPermissionProfile()), empty);
  EXPECT_EQ(permissionProfileJSONObject(GrantedPermissionProfile()), empty);
}

TEST(PermissionProfile, WritesWhatIsGranted) {
  GrantedPermissionProfile granted;
  granted.network = JSONValue(true);
  EXPECT_EQ(permissionProfileJSONObject(granted), JSONValue::decode(R"({"network":true})"));
  granted.fileSystem = JSONValue("/");
  EXPECT_EQ(permissionProfileJSONObject(granted), JSONValue::decode(R"({"network":true,"fileSystem":"/"})"));
}

TEST(OrmelApprovalDecision, HasTheUsualAnswersAsConstants) {
  EXPECT_EQ(OrmelApprovalDecision::accept.jsonValue, JSONValue("accept"));
  EXPECT_EQ(OrmelApprovalDecision::acceptForSession.jsonValue, JSONValue("acceptForSession"));
  EXPECT_EQ(OrmelApprovalDecision::decline.jsonValue, JSONValue("decline"));
  EXPECT_EQ(OrmelApprovalDecision::cancel.jsonValue, JSONValue("cancel"));
}

TEST(OrmelApprovalDecision, StreamsInOneReadableLine) {
  std::ostringstream stream;
  stream << OrmelApprovalDecision::cancel << ' ' << RequestPermissionProfile() << ' ' << PermissionGrantScope::turn;
  EXPECT_EQ(stream.str(), R"(OrmelApprovalDecision "cancel" RequestPermissionProfile {} PermissionGrantScope "turn")");
}

}  // namespace
