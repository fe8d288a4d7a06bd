#include "OrmelSDK/AppServerRun/Framing/AppServerRPCError.h"

#include <gtest/gtest.h>

#include <optional>
#include <string_view>

namespace {

using ormel::AppServerRPCError;
using ormel::JSONValue;

AppServerRPCError errorIn(std::string_view json) { return AppServerRPCError::fromJSONValue(JSONValue::decode(json)); }

TEST(AppServerRPCError, DescribesItselfByCodeAndMessage) {
  EXPECT_STREQ(AppServerRPCError(-32601, "Method not found").what(), "App-server error -32601: Method not found");
  EXPECT_STREQ(AppServerRPCError(5, "").what(), "App-server error 5: ");
}

TEST(AppServerRPCError, IsCaughtAsAnErrorOfTheLibrary) { EXPECT_THROW(throw AppServerRPCError(1, "m"), ormel::Error); }

TEST(AppServerRPCError, ReadsAllMembers) {
  const auto error = errorIn(R"({"code":-32602,"message":"bad params","data":{"field":"id"}})");
  EXPECT_EQ(error.code(), -32602);
  EXPECT_EQ(error.message(), "bad params");
  EXPECT_EQ(error.data(), JSONValue::object({{"field", "id"}}));
}

TEST(AppServerRPCError, AssumesACodeWhereThereIsNoUsableOne) {
  for (const auto* const json : {"{}", R"({"code":1.5})", R"({"code":"1"})", R"({"code":null})", R"({"code":true})"}) {
    EXPECT_EQ(errorIn(json).code(), -32000) << json;
  }
  EXPECT_EQ(errorIn(R"({"code":4.0})").code(), 4);
}

TEST(AppServerRPCError, AssumesAMessageWhereThereIsNoText) {
  for (const auto* const json : {"{}", R"({"message":3})", R"({"message":null})", R"({"message":["m"]})"}) {
    EXPECT_EQ(errorIn(json).message(), "Unknown app-server error") << json;
  }
  EXPECT_EQ(errorIn(R"({"message":""})").message(), "");
}

TEST(AppServerRPCError, TellsNullDataFromNoData) {
  EXPECT_EQ(errorIn("{}").data(), std::nullopt);
  const auto data = errorIn(R"({"data":null})").data();
  ASSERT_TRUE(data.has_value());
  EXPECT_TRUE(data->isNull());
}

TEST(AppServerRPCError, MakesUpForAnErrorThatIsNoObject) {
  for (const auto* const json : {"null", "\"failed\"", "[]", "3"}) {
    EXPECT_EQ(errorIn(json), AppServerRPCError(-32000, "Unknown app-server error")) << json;
  }
}

TEST(AppServerRPCError, ComparesCodeMessageAndData) {
  const AppServerRPCError error(1, "m", JSONValue(1));
  EXPECT_EQ(error, AppServerRPCError(1, "m", JSONValue(1.0)));
  EXPECT_NE(error, AppServerRPCError(2, "m", JSONValue(1)));
  EXPECT_NE(error, AppServerRPCError(1, "n", JSONValue(1)));
  EXPECT_NE(error, AppServerRPCError(1, "m", JSONValue(2)));
  EXPECT_NE(error, AppServerRPCError(1, "m"));
  EXPECT_NE(AppServerRPCError(1, "m", JSONValue()), AppServerRPCError(1, "m"));
}

TEST(AppServerRPCErrorDeathTest, EndsTheProcessAtAWholeCodeBeyondTheSigned64BitRange) {
  EXPECT_DEATH(errorIn(R"({"code":1e19})"), "Fatal error: .*64-bit");
}

}  // namespace
