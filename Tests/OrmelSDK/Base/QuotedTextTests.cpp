#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "OrmelSDK/Base/FailureCause.h"

namespace {

using ormel::detail::quotedForPeople;

TEST(QuotedText, ShowsNothingThatCouldMislead) {
  struct Row {
    std::string_view text;
    std::string_view quoted;
  };
  using namespace std::string_view_literals;
  for (const Row& row : {Row{"", "\"\""}, Row{"plain", "\"plain\""}, Row{"a\"b\\c", "\"a\\\"b\\\\c\""},
                         Row{"\n\r\t", "\"\\n\\r\\t\""}, Row{"\x1b[31m\x7f\0"sv, "\"\\x1b[31m\\x7f\\x00\""},
                         Row{"caf\u00e9 \u4e16 \U0001f600", "\"caf\u00e9 \u4e16 \U0001f600\""},
                         Row{"\xc3", "\"\\xc3\""}, Row{"\xff\xfe x", "\"\\xff\\xfe x\""},
                         Row{"\xe2\x82", "\"\\xe2\\x82\""}, Row{"\xed\xa0\x80", "\"\\xed\\xa0\\x80\""},
                         Row{"\u009b", "\"\\xc2\\x9b\""}, Row{"\u202e", "\"\\xe2\\x80\\xae\""},
                         Row{"\u2066", "\"\\xe2\\x81\\xa6\""}, Row{"\ufeff", "\"\\xef\\xbb\\xbf\""}}) {
    EXPECT_EQ(quotedForPeople(row.text), row.quoted);
  }
}

TEST(QuotedText, IsCutBetweenCharacters) {
  EXPECT_EQ(quotedForPeople("abcdef", 6), "\"abcdef\"");
  EXPECT_EQ(quotedForPeople("abcdef", 5), "\"abcde\"...");
  EXPECT_EQ(quotedForPeople("abcd\u00e9f", 5), "\"abcd\u00e9\"...");
}

}  // namespace
