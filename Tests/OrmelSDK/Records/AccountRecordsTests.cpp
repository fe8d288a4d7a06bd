#include "OrmelSDK/Records/AccountRecords.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string_view>
#include <variant>

#include "Support/CodingChecks.h"

namespace {

using namespace ormel;

TEST(WorkspaceMessageType, KeepsAWordThatItDoesNotKnow) {
  const std::pair<std::string_view, WorkspaceMessageType> rows[] = {
      {"headline", WorkspaceMessageType::headline},
      {"announcement", WorkspaceMessageType::announcement},
      {"Headline", WorkspaceMessageType::unknown("Headline")},
      {"survey", WorkspaceMessageType::unknown("survey")},
      {"", WorkspaceMessageType::unknown("")},
  };
  for (const auto& [word, type] : rows) {
    EXPECT_EQ(decode<WorkspaceMessageType>(JSONValue(word)), type) << word;
    EXPECT_EQ(encode(type), JSONValue(word));
  }
  EXPECT_EQ(tests::failureOf<WorkspaceMessageType>("1"), "Expected String but found a number.");
  EXPECT_THROW(tests::decoded<WorkspaceMessageType>("null"), DecodingError);
}

std::optional<OrmelAccountControlNotification> notification(std::string_view method, std::string_view params) {
  return OrmelAccountControlNotification::from(method, JSONValue::decode(params));
}

TEST(OrmelAccountControlNotification, ReadsTheRecordOfItsMethod) {
  RateLimitSnapshot limits;
  limits.limitID = "l";
  limits.primary = RateLimitWindowSnapshot{12.5, 300, std::nullopt};
  struct Row {
    std::string_view method;
    std::string_view params;
    OrmelAccountControlNotification expected;
  };
  const Row rows[] = {
      {"account/updated", R"({"authMode":"apiKey","planType":"pro"})", {AccountUpdatedNotification{"apiKey", "pro"}}},
      {"account/updated", "{}", {AccountUpdatedNotification()}},
      {"account/rateLimits/updated",
       R"({"rateLimits":{"limitId":"l","primary":{"usedPercent":12.5,"windowDurationMins":300}},"other":1})",
       {AccountRateLimitsUpdatedNotification{limits}}},
      {"account/rateLimits/updated", R"({"rateLimits":{}})", {AccountRateLimitsUpdatedNotification()}},
      {"account/login/completed",
       R"({"loginId":"l","success":false,"error":"e"})",
       {AccountLoginCompletedNotification{"l", false, "e"}}},
  };
  for (const Row& row : rows) EXPECT_EQ(notification(row.method, row.params), row.expected) << row.params;
}

TEST(OrmelAccountControlNotification, IsNothingForWhatItCannotRead) {
  const std::pair<std::string_view, std::string_view> rows[] = {
      {"account/updated", "null"},
      {"account/updated", "[]"},
      {"account/updated", R"({"planType":1})"},
      {"account/rateLimits/updated", "{}"},
      {"account/rateLimits/updated", R"({"rateLimits":{"primary":{}}})"},
      {"account/login/completed", R"({"loginId":"l"})"},
      {"account/Updated", "{}"},
      {"account/login/start", R"({"success":true})"},
      {"thread/archived", R"({"threadId":"t"})"},
      {"", "{}"},
  };
  for (const auto& [method, params] : rows) EXPECT_EQ(notification(method, params), std::nullopt) << method << params;
  for (const std::string_view method : {"account/updated", "account/rateLimits/updated", "account/login/completed"}) {
    EXPECT_EQ(OrmelAccountControlNotification::from(method, std::nullopt), std::nullopt) << method;
  }
  const auto unwritable = JSONValue::object({{"planType", "pro"}, {"x", std::numeric_limits<double>::infinity()}});
  EXPECT_EQ(OrmelAccountControlNotification::from("account/updated", unwritable), std::nullopt);
}

TEST(AuthStatusResponse, PrintsNoTokenButWritesIt) {
  const AuthStatusResponse status{"apiKey", "sesame", true};
  EXPECT_EQ(tests::printed(status),
            R"(AuthStatusResponse {"authMethod":"apiKey","authToken":"<secret>","requiresVelnorAuth":true})");
  tests::expectWritten(status, R"({"authMethod":"apiKey","authToken":"sesame","requiresVelnorAuth":true})");
  EXPECT_EQ(decode<AuthStatusResponse>(encode(status)), status);
  EXPECT_EQ(tests::printed(AuthStatusResponse()), "AuthStatusResponse {}");
}

TEST(OrmelAccountControlNotification, StreamsAsWhatItSays) {
  const OrmelAccountControlNotification ended{AccountLoginCompletedNotification{"l", true, std::nullopt}};
  EXPECT_EQ(tests::printed(ended), R"(AccountLoginCompletedNotification {"loginId":"l","success":true})");
}

}  // namespace
