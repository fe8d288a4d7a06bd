#include "OrmelSDK/Text/LowercasedText.h"

#include <gtest/gtest.h>

namespace ormel::detail {

TEST(Lowercased, LowersLettersOfEveryScript) {
  EXPECT_EQ(lowercased(""), "");
  EXPECT_EQ(lowercased("Blocked: 7 REVOKED\n"), "blocked: 7 revoked\n");
  EXPECT_EQ(lowercased("ÄÖÜ ΣΩ ЖД"), "äöü σω жд");
  EXPECT_EQ(lowercased("\xF0\x90\x90\x80"), "\xF0\x90\x90\xA8");
}

TEST(Lowercased, KeepsBytesThatAreNoText) { EXPECT_EQ(lowercased("A\xFF\xC3"), "a\xFF\xC3"); }

}  // namespace ormel::detail
