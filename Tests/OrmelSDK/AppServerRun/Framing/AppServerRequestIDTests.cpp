#include "OrmelSDK/AppServerRun/Framing/AppServerRequestID.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <unordered_map>
#include <unordered_set>

namespace {

using ormel::AppServerRequestID;
using ormel::JSONValue;

std::optional<AppServerRequestID> idIn(std::string_view json) {
  return AppServerRequestID::fromJSONValue(JSONValue::decode(json));
}

TEST(AppServerRequestID, ReadsAWholeNumberInEitherSpelling) {
  EXPECT_EQ(idIn("7"), AppServerRequestID::integer(7));
  EXPECT_EQ(idIn("7.0"), AppServerRequestID::integer(7));
  EXPECT_EQ(idIn("-7e2"), AppServerRequestID::integer(-700));
  EXPECT_EQ(idIn("-0.0"), AppServerRequestID::integer(0));
}

TEST(AppServerRequestID, ReadsATextAlsoAnEmptyOne) {
  EXPECT_EQ(idIn("\"7\""), AppServerRequestID::string("7"));
  EXPECT_EQ(idIn("\"\""), AppServerRequestID::string(""));
}

TEST(AppServerRequestID, ReadsNothingElse) {
  for (const auto* const json : {"1.5", "-0.5", "null", "true", "false", "{}", "[]", "[1]"}) {
    EXPECT_EQ(idIn(json), std::nullopt) << json;
  }
}

TEST(AppServerRequestID, TellsANumberFromATextOfItsDigits) {
  EXPECT_NE(AppServerRequestID::integer(7), AppServerRequestID::string("7"));
  EXPECT_NE(AppServerRequestID::integer(7), AppServerRequestID::integer(8));
  EXPECT_NE(AppServerRequestID::string("a"), AppServerRequestID::string("A"));
}

TEST(AppServerRequestID, ReadsTheWholeSigned64BitRange) {
  EXPECT_EQ(idIn("-9223372036854775808"), AppServerRequestID::integer(std::numeric_limits<std::int64_t>::min()));
  EXPECT_EQ(idIn("9223372036854774784"), AppServerRequestID::integer(9223372036854774784));
}

TEST(AppServerRequestIDDeathTest, EndsTheProcessAtAWholeNumberBeyondTheSigned64BitRange) {
  EXPECT_DEATH(idIn("1e19"), "Fatal error: .*64-bit");
  EXPECT_DEATH(idIn("9223372036854775808"), "Fatal error: .*64-bit");
}

TEST(AppServerRequestID, GoesBackToTheFormItCameIn) {
  for (const auto* const json : {"7", "-1", "9007199254740992", "\"7\"", "\"\"", "\"\\u0000\""}) {
    EXPECT_EQ(idIn(json)->jsonValue(), JSONValue::decode(json)) << json;
  }
  EXPECT_EQ(AppServerRequestID::integer(7).jsonValue().encode(), "7");
}

TEST(AppServerRequestID, WritesAnIntegerBeyondTheExactOnesAsTheNearestDouble) {
  EXPECT_EQ(AppServerRequestID::integer(9007199254740993).jsonValue(), JSONValue(9007199254740992.0));
}

TEST(AppServerRequestID, ShowsItsCaseAndPayload) {
  const auto integer = AppServerRequestID::integer(3);
  EXPECT_EQ(integer.kind(), AppServerRequestID::Kind::integer);
  EXPECT_EQ(integer.integerValue(), 3);
  EXPECT_EQ(integer.stringValue(), nullptr);
  const auto text = AppServerRequestID::string("three");
  EXPECT_EQ(text.kind(), AppServerRequestID::Kind::string);
  EXPECT_EQ(text.integerValue(), std::nullopt);
  EXPECT_EQ(*text.stringValue(), "three");
}

TEST(AppServerRequestID, HashesEqualIDsAlikeAndTheTwoFormsApart) {
  const std::hash<AppServerRequestID> hash;
  EXPECT_EQ(hash(*idIn("7")), hash(*idIn("7.0")));
  EXPECT_EQ(hash(AppServerRequestID::string("x")), hash(AppServerRequestID::string("x")));
  EXPECT_NE(hash(AppServerRequestID::integer(0)), hash(AppServerRequestID::string("")));
  EXPECT_NE(hash(AppServerRequestID::integer(1)), hash(AppServerRequestID::string("1")));
}

TEST(AppServerRequestID, SpreadsConsecutiveIntegers) {
  std::unordered_set<std::size_t> hashes;
  for (std::int64_t value = -5'000; value < 5'000; ++value) {
    hashes.insert(std::hash<AppServerRequestID>()(AppServerRequestID::integer(value)));
  }
  EXPECT_EQ(hashes.size(), 10'000u);
}

TEST(AppServerRequestID, IsTheKeyOfATable) {
  std::unordered_map<AppServerRequestID, int> table;
  table[AppServerRequestID::integer(1)] = 10;
  table[AppServerRequestID::string("1")] = 20;
  EXPECT_EQ(table.at(*idIn("1.0")), 10);
  EXPECT_EQ(table.at(*idIn("\"1\"")), 20);
  EXPECT_FALSE(table.contains(AppServerRequestID::integer(2)));
}

}  // namespace
