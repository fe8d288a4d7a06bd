#include "OrmelSDK/Base/UUID.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>

namespace {

using ormel::UUID;

TEST(UUID, HasTheUsualTextFormInUpperCase) {
  const UUID made{{0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}};
  EXPECT_EQ(made.text(), "01234567-89AB-CDEF-0123-456789ABCDEF");
  std::ostringstream stream;
  stream << UUID();
  EXPECT_EQ(stream.str(), "00000000-0000-0000-0000-000000000000");
}

TEST(UUID, IsDifferentEachTimeAndMarkedAsRandom) {
  constexpr std::size_t count = 1000;
  const std::regex randomForm("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
  std::set<UUID> made;
  for (std::size_t i = 0; i < count; ++i) {
    const UUID one = UUID::random();
    EXPECT_TRUE(std::regex_match(one.text(), randomForm)) << one;
    made.insert(one);
  }
  EXPECT_EQ(made.size(), count);
}

}  // namespace
