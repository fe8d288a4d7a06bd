#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

#include "OrmelSDK/Text/UTF8.h"

namespace {

using ormel::isValidUTF8;
using ormel::repairedUTF8;
using ormel::validUTF8Prefix;

const std::string replacement = "\uFFFD";

TEST(UTF8Repair, LeavesWellFormedTextAlone) {
  const std::string text = "plain \u00e9 \u20ac \uFFFD \U0001F600 \U0010FFFF";
  EXPECT_TRUE(isValidUTF8(text));
  EXPECT_EQ(repairedUTF8(text), text);
  EXPECT_EQ(repairedUTF8(""), "");
}

TEST(UTF8Repair, ReplacesEachMaximalInvalidPartOnce) {
  const std::pair<std::string_view, std::string> cases[] = {
      {"a\xFFz", "a" + replacement + "z"},
      {"\x80\x80", replacement + replacement},
      {"a\xE2\x82z", "a" + replacement + "z"},
      {"\xE2\x82", replacement},
      {"\xF0\x9F\x98", replacement},
      {"\xF0\x9F\x98\xF0\x9F\x98\x80", replacement + "\U0001F600"},
      {"\xC0\xAF", replacement + replacement},
      {"\xE0\x80\xAF", replacement + replacement + replacement},
      {"\xED\xA0\x80", replacement + replacement + replacement},
      {"\xF4\x90\x80\x80", replacement + replacement + replacement + replacement},
      {"\xF5", replacement},
      {"\xC3", replacement},
      {"\xC3(", replacement + "("},
      // The example of the Unicode standard for the practice.
      {"\x61\xF1\x80\x80\xE1\x80\xC2\x62\x80\x63\x80\xBF\x64",
       "a" + replacement + replacement + replacement + "b" + replacement + "c" + replacement + replacement + "d"},
  };
  for (const auto& [bytes, repaired] : cases) {
    EXPECT_FALSE(isValidUTF8(bytes));
    EXPECT_EQ(repairedUTF8(bytes), repaired);
    EXPECT_TRUE(isValidUTF8(repairedUTF8(bytes)));
  }
}

TEST(UTF8Repair, FindsTheFirstOffence) {
  EXPECT_EQ(validUTF8Prefix("abc"), 3u);
  EXPECT_EQ(validUTF8Prefix("ab\xFF"), 2u);
  EXPECT_EQ(validUTF8Prefix("\u00e9\xE2\x82"), 2u);
}

TEST(UTF8Repair, AgreesWithTheValidatorOnEveryPairAndTripleOfEdgeBytes) {
  const std::string edges(
      "\x00\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xEC\xED\xEE\xEF\xF0\xF1\xF3\xF4\xF5\xFF", 24);
  for (const char first : edges) {
    for (const char second : edges) {
      for (const char third : edges) {
        for (const std::string& bytes :
             {std::string{first, second, third}, std::string{first, second, third, '\x80'}}) {
          EXPECT_EQ(isValidUTF8(bytes), validUTF8Prefix(bytes) == bytes.size());
          EXPECT_TRUE(isValidUTF8(repairedUTF8(bytes)));
        }
      }
    }
  }
}

}  // namespace
