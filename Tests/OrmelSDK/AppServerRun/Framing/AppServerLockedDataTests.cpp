#include "OrmelSDK/AppServerRun/Framing/AppServerLockedData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using ormel::detail::AppServerLockedData;

TEST(AppServerLockedData, StartsEmpty) { EXPECT_EQ(AppServerLockedData().string(), ""); }

TEST(AppServerLockedData, ReturnsEverythingThatWasAppended) {
  AppServerLockedData data;
  data.append("first ");
  data.append("");
  data.append("second");
  EXPECT_EQ(data.string(), "first second");
}

TEST(AppServerLockedData, GivesASnapshot) {
  AppServerLockedData data;
  data.append("before");
  const std::string snapshot = data.string();
  data.append(" after");
  EXPECT_EQ(snapshot, "before");
  EXPECT_EQ(data.string(), "before after");
}

TEST(AppServerLockedData, RepairsTheTextAndNotThePieces) {
  AppServerLockedData data;
  data.append("\xE2\x82");
  EXPECT_EQ(data.string(), "\xEF\xBF\xBD");
  data.append("\xAC\xFF");
  EXPECT_EQ(data.string(), "\xE2\x82\xAC\xEF\xBF\xBD");
}

TEST(AppServerLockedData, LosesNothingOfSeveralWriters) {
  constexpr std::ptrdiff_t appends = 2'000;
  AppServerLockedData data;
  std::vector<std::thread> writers;
  for (const char* const letter : {"a", "b", "c"}) {
    writers.emplace_back([&data, letter] {
      for (std::ptrdiff_t count = 0; count < appends; ++count) data.append(letter);
    });
  }
  for (std::size_t size = 0; size < 3 * appends / 2;) {
    const std::size_t now = data.string().size();
    ASSERT_GE(now, size);
    size = now;
  }
  for (auto& writer : writers) writer.join();
  const std::string all = data.string();
  for (const char letter : std::string_view("abc")) EXPECT_EQ(std::count(all.begin(), all.end(), letter), appends);
}

}  // namespace
