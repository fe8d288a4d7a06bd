#include "OrmelSDK/Text/TrimmedText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using ormel::detail::trimmed;

TEST(Trimmed, DropsWhiteSpaceAndLineEndsAtBothEnds) {
  EXPECT_EQ(trimmed(" \t\r\n\v\f text \n here \r\n"), "text \n here");
  EXPECT_EQ(trimmed(""), "");
  EXPECT_EQ(trimmed(" \n "), "");
}

TEST(Trimmed, KnowsTheWhiteSpaceOfUnicode) {
  const std::string blanks =
      "\xC2\x85\xC2\xA0\xE1\x9A\x80\xE2\x80\x80\xE2\x80\x8A\xE2\x80\xA8\xE2\x80\xA9\xE2\x80\xAF\xE2\x81\x9F\xE3\x80"
      "\x80";
  EXPECT_EQ(trimmed(blanks + "text" + blanks), "text");
}

TEST(Trimmed, LeavesOtherCharactersAlone) {
  const std::string text =
      "\xC3\xA0"
      "text\xE2\x80\xA0";
  EXPECT_EQ(trimmed(text), text);
  EXPECT_EQ(trimmed("\xE2\x80\x8B"
                    "text"),
            "\xE2\x80\x8B"
            "text");
}

TEST(Trimmed, LeavesInvalidBytesAlone) {
  EXPECT_EQ(trimmed("\x85"
                    "text\xA0"),
            "\x85"
            "text\xA0");
  EXPECT_EQ(trimmed(" \xE2\x80 "), "\xE2\x80");
}

}  // namespace
