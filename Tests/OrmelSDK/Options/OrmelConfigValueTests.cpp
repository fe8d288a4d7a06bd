#include "OrmelSDK/Options/OrmelConfigValue.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "OrmelSDK/Options/OrmelExecutableTrust.h"
#include "OrmelSDK/Options/OrmelOptions.h"

namespace {

using ormel::OrmelConfigValue;
using ormel::OrmelExecutableTrustAssessment;
using ormel::OrmelOptions;
TEST(OrmelConfigValue, IsWrittenAsALiteralOfEachKind) {
  const OrmelConfigValue text = "x";
  EXPECT_EQ(text.kind(), OrmelConfigValue::Kind::string);
  EXPECT_EQ(*text.stringValue(), "x");
  EXPECT_EQ(text, OrmelConfigValue(std::string("x")));
  EXPECT_EQ(text, OrmelConfigValue(std::string_view("x")));

  const OrmelConfigValue integer = 3;
  EXPECT_EQ(integer.kind(), OrmelConfigValue::Kind::integer);
  EXPECT_EQ(*integer.integerValue(), 3);
  EXPECT_EQ(integer, OrmelConfigValue(3u));
  EXPECT_EQ(integer, OrmelConfigValue(std::int64_t{3}));

  const OrmelConfigValue number = 1.5;
  EXPECT_EQ(number.kind(), OrmelConfigValue::Kind::double_);
  EXPECT_EQ(*number.doubleValue(), 1.5);
  EXPECT_EQ(number, OrmelConfigValue(1.5f));

  const OrmelConfigValue boolean = true;
  EXPECT_EQ(boolean.kind(), OrmelConfigValue::Kind::bool_);
  EXPECT_EQ(*boolean.boolValue(), true);

  const auto list = OrmelConfigValue::array({1, 2.5, "x", false, OrmelConfigValue::array({})});
  EXPECT_EQ(list.kind(), OrmelConfigValue::Kind::array);
  EXPECT_EQ(list.arrayValue()->size(), 5u);

  const auto table = OrmelConfigValue::object({{"a", 1}, {"b", OrmelConfigValue::object({{"c", "d"}})}});
  EXPECT_EQ(table.kind(), OrmelConfigValue::Kind::object);
  EXPECT_EQ(*table.objectValue()->at("b").objectValue()->at("c").stringValue(), "d");
}

TEST(OrmelConfigValue, GivesNothingForAnotherCase) {
  const OrmelConfigValue integer = 1;
  EXPECT_EQ(integer.stringValue(), nullptr);
  EXPECT_EQ(integer.doubleValue(), nullptr);
  EXPECT_EQ(integer.boolValue(), nullptr);
  EXPECT_EQ(integer.arrayValue(), nullptr);
  EXPECT_EQ(integer.objectValue(), nullptr);
  const OrmelConfigValue text = "1";
  EXPECT_EQ(text.integerValue(), nullptr);
}

TEST(OrmelConfigValue, IsNotMadeOfWhatItCannotHold) {
  static_assert(!std::is_constructible_v<OrmelConfigValue, std::nullptr_t>);
  static_assert(!std::is_constructible_v<OrmelConfigValue, std::uint64_t>);
  static_assert(!std::is_constructible_v<OrmelConfigValue, char>);
  static_assert(!std::is_constructible_v<OrmelConfigValue, void*>);
  static_assert(!std::is_default_constructible_v<OrmelConfigValue>);
}

TEST(OrmelConfigValue, ComparesTheCaseAndThePayload) {
  EXPECT_NE(OrmelConfigValue(1), OrmelConfigValue(1.0));
  EXPECT_NE(OrmelConfigValue(1), OrmelConfigValue(true));
  EXPECT_NE(OrmelConfigValue("1"), OrmelConfigValue(1));
  EXPECT_NE(OrmelConfigValue(1), OrmelConfigValue(2));
  EXPECT_EQ(OrmelConfigValue::array({1, "x"}), OrmelConfigValue::array({1, "x"}));
  EXPECT_NE(OrmelConfigValue::array({1, 2}), OrmelConfigValue::array({2, 1}));
  EXPECT_NE(OrmelConfigValue::array({}), OrmelConfigValue::object({}));
}

TEST(OrmelConfigValue, ComparesTheMembersOfObjects) {
  const auto table = OrmelConfigValue::object({{"a", 1}, {"b", OrmelConfigValue::object({{"c", 2}})}});
  EXPECT_EQ(table, OrmelConfigValue::object({{"b", OrmelConfigValue::object({{"c", 2}})}, {"a", 1}}));
  EXPECT_EQ(table, OrmelConfigValue(table));
  EXPECT_NE(table, OrmelConfigValue::object({{"a", 1}, {"b", OrmelConfigValue::object({{"c", 2.0}})}}));
  EXPECT_NE(table, OrmelConfigValue::object({{"a", 1}}));
  EXPECT_EQ(OrmelConfigValue::array({table}), OrmelConfigValue::array({OrmelConfigValue(table)}));
}

TEST(OrmelOptions, StartEmpty) {
  static_assert(!std::is_aggregate_v<OrmelOptions>);
  const OrmelOptions options;
  EXPECT_EQ(options.ormelPathOverride, std::nullopt);
  EXPECT_EQ(options.baseUrl, std::nullopt);
  EXPECT_EQ(options.apiKey, std::nullopt);
  EXPECT_FALSE(options.config.has_value());
  EXPECT_FALSE(options.env.has_value());
  EXPECT_FALSE(options.executableTrustAssessment);
  EXPECT_FALSE(options.selectedOrmelPathOverride);
  EXPECT_FALSE(options.trustCommandRunner);
}

TEST(OrmelOptions, AreCopiedWithTheirCallbacks) {
  OrmelOptions options;
  options.executableTrustAssessment = [](const std::string& path) {
    return OrmelExecutableTrustAssessment::rejected("not " + path);
  };
  const OrmelOptions copy = options;
  EXPECT_EQ(copy.executableTrustAssessment("this"), OrmelExecutableTrustAssessment::rejected("not this"));
}

TEST(OrmelExecutableTrustAssessment, TellsTrustedFromRejectedAndOneReasonFromAnother) {
  const auto trusted = OrmelExecutableTrustAssessment::trusted();
  const auto rejected = OrmelExecutableTrustAssessment::rejected("why");
  EXPECT_TRUE(trusted.isTrusted());
  EXPECT_EQ(trusted.reason(), "");
  EXPECT_FALSE(rejected.isTrusted());
  EXPECT_EQ(rejected.kind(), OrmelExecutableTrustAssessment::Kind::rejected);
  EXPECT_EQ(rejected.reason(), "why");
  EXPECT_EQ(trusted, OrmelExecutableTrustAssessment::trusted());
  EXPECT_NE(rejected, trusted);
  EXPECT_NE(rejected, OrmelExecutableTrustAssessment::rejected("why not"));
  EXPECT_NE(trusted, OrmelExecutableTrustAssessment::rejected(""));
}

}  // namespace
