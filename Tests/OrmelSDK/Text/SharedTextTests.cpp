#include "OrmelSDK/Text/SharedText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <latch>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "OrmelSDK/Coding/SharedTextCodec.h"
#include "OrmelSDK/Concurrency/EventChannel.h"
#include "OrmelSDK/JSON/CodingErrors.h"
#include "OrmelSDK/Text/SharedTextSnapshots.h"

namespace {

using ormel::EventChannel;
using ormel::SharedText;
using ormel::detail::SharedTextSnapshots;

TEST(SharedText, BeginsEmpty) {
  const SharedText text;
  EXPECT_TRUE(text.empty());
  EXPECT_EQ(text.size(), 0u);
  EXPECT_EQ(text, "");
  EXPECT_EQ(text.view().size(), 0u);
}

TEST(SharedText, IsMadeFromEveryKindOfText) {
  EXPECT_EQ(SharedText("a"), "a");
  EXPECT_EQ(SharedText(std::string("a")), std::string("a"));
  EXPECT_EQ(SharedText(std::string_view("a")), std::string_view("a"));
  EXPECT_EQ(SharedText("").string(), "");
  const std::string_view converted = SharedText("kept").string() == "kept" ? "yes" : "no";
  EXPECT_EQ(converted, "yes");
}

TEST(SharedText, ComparesByteByByte) {
  const SharedText text = "\u00e9";
  EXPECT_EQ(text, SharedText("\u00e9"));
  EXPECT_NE(text, SharedText("e\u0301"));
  EXPECT_NE(text, "e");
  EXPECT_EQ("\u00e9", text);
  EXPECT_NE(text, SharedText());
  SharedText longer = text;
  longer.append("x");
  EXPECT_NE(text, longer);
}

TEST(SharedText, KeepsZeroBytes) {
  using namespace std::string_view_literals;
  SharedText text("a\0b"sv);
  text.append("\0"sv);
  EXPECT_EQ(text, "a\0b\0"sv);
}

TEST(SharedText, ExtendsTheLatestSnapshotInPlace) {
  SharedText text = "a";
  text.append("b");
  const char* bytes = text.view().data();
  const SharedText before = text;
  text.append("c");
  EXPECT_EQ(text.view().data(), bytes);
  EXPECT_EQ(before.view().data(), bytes);
  EXPECT_EQ(before, "ab");
  EXPECT_EQ(text, "abc");
}

TEST(SharedText, MovesAnOlderSnapshotThatGrowsToABufferOfItsOwn) {
  SharedText first = "a";
  first.append("b");
  SharedText second = first;
  first.append("-first");
  second.append("-second");
  EXPECT_EQ(first, "ab-first");
  EXPECT_EQ(second, "ab-second");
  EXPECT_NE(first.view().data(), second.view().data());
}

TEST(SharedText, ReusesTheRoomOfLongerSnapshotsThatAreGone) {
  SharedText text = "a";
  text.append("bcdefghi");
  const char* bytes = text.view().data();
  {
    SharedText(text).append("x");
  }
  text.append("y");
  EXPECT_EQ(text.view().data(), bytes);
  EXPECT_EQ(text, "abcdefghiy");
}

TEST(SharedText, AppendsPartsOfItself) {
  SharedText text = "abc";
  for (int round = 0; round < 6; ++round) text.append(text);
  EXPECT_EQ(text.size(), 3u * 64);
  text.append(text.view().substr(1, 2));
  EXPECT_EQ(text.view().substr(190), "bcbc");
}

TEST(SharedText, IgnoresAnEmptyAppend) {
  SharedText text;
  text.append("");
  EXPECT_EQ(text, "");
  text.append("a");
  const SharedText before = text;
  text.append({});
  EXPECT_EQ(text.view().data(), before.view().data());
}

TEST(SharedText, IsAValue) {
  static_assert(std::is_nothrow_move_constructible_v<SharedText> && std::is_nothrow_copy_constructible_v<SharedText>);
  SharedText text = "a";
  SharedText copy = text;
  text = "b";
  EXPECT_EQ(copy, "a");
  SharedText moved = std::move(copy);
  EXPECT_EQ(moved, "a");
  EXPECT_TRUE(copy.empty());  // NOLINT(bugprone-use-after-move): a text that was moved from is empty
  copy.append("again");
  EXPECT_EQ(copy, "again");
  SharedText& same = moved;
  moved = same;
  EXPECT_EQ(moved, "a");
}

TEST(SharedText, KeepsEverySnapshotOfATextThatGrows) {
  std::vector<SharedText> snapshots;
  std::string whole;
  SharedText text;
  for (int step = 0; step < 2000; ++step) {
    const std::string delta(static_cast<std::size_t>(step % 7 + 1), static_cast<char>('a' + step % 26));
    text.append(delta);
    whole += delta;
    snapshots.push_back(text);
  }
  for (const SharedText& snapshot : snapshots) {
    ASSERT_EQ(snapshot, std::string_view(whole).substr(0, snapshot.size()));
  }
  EXPECT_EQ(snapshots.back(), whole);
}

// Growth by doubling: the buffers that older snapshots keep are together no larger than the newest.
TEST(SharedText, KeepsFewBuffersForManySnapshots) {
  constexpr std::size_t steps = 100'000;
  std::vector<SharedText> snapshots;
  SharedText text;
  for (std::size_t step = 0; step < steps; ++step) {
    text.append("0123456789");
    snapshots.push_back(text);
  }
  std::size_t buffers = 0;
  std::size_t outgrown = 0;
  for (std::size_t index = 0; index + 1 < steps; ++index) {
    if (snapshots[index].view().data() == snapshots[index + 1].view().data()) continue;
    ++buffers;
    outgrown += snapshots[index].size();
  }
  EXPECT_LE(buffers, 20u);
  EXPECT_LE(outgrown, 2 * text.size());
}

TEST(SharedText, LetsManyThreadsReadOlderSnapshotsWhileItGrows) {
  constexpr std::size_t steps = 20'000;
  constexpr std::size_t readers = 3;
  std::vector<SharedText> snapshots(steps);
  std::atomic<std::size_t> published{0};
  std::atomic<std::size_t> wrong{0};
  std::vector<std::thread> threads;
  for (std::size_t reader = 0; reader < readers; ++reader) {
    threads.emplace_back([&] {
      for (std::size_t next = 0; next < steps;) {
        const std::size_t available = published.load(std::memory_order_acquire);
        if (next == available) std::this_thread::yield();
        for (; next < available; ++next) {
          const SharedText mine = snapshots[next];
          if (mine.size() != 8 * (next + 1) || mine.view().back() != static_cast<char>('a' + next % 26)) ++wrong;
        }
      }
    });
  }
  SharedText text;
  for (std::size_t step = 0; step < steps; ++step) {
    text.append(std::string(8, static_cast<char>('a' + step % 26)));
    snapshots[step] = text;
    published.store(step + 1, std::memory_order_release);
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0u);
}

TEST(SharedTextSnapshots, AreCopiesOfTheirText) {
  SharedTextSnapshots snapshots;
  EXPECT_EQ(snapshots.of(SharedText()), "");
  SharedText text;
  std::vector<SharedText> copies;
  std::string expected;
  for (int step = 0; step < 500; ++step) {
    text.append("word ");
    copies.push_back(snapshots.of(text));
  }
  for (const SharedText& copy : copies) EXPECT_EQ(copy, expected += "word ");
  const SharedText other = "other";
  EXPECT_EQ(snapshots.of(other), "other");
  EXPECT_EQ(snapshots.of(text), text);
}

TEST(SharedTextSnapshots, MayOutliveTheirMakerAndTheText) {
  SharedText copy;
  {
    SharedTextSnapshots snapshots;
    SharedText text = "a text that is";
    text.append(" no more");
    copy = snapshots.of(text);
  }
  EXPECT_EQ(copy, "a text that is no more");
}

// A consumer that adds to its copies, and drops them, must not have the whole text copied for each piece.
TEST(SharedTextSnapshots, LeaveTheTextItsRoomWhenCopiesThatHaveGrownAreGone) {
  SharedTextSnapshots snapshots;
  SharedText text;
  int buffers = 0;
  const char* bytes = nullptr;
  for (int step = 0; step < 10'000; ++step) {
    snapshots.append("piece ", text);
    if (std::exchange(bytes, text.view().data()) != text.view().data()) ++buffers;
    SharedText copy = snapshots.of(text);
    copy.append("(more to come)");
  }
  EXPECT_EQ(text.size(), 60'000U);
  EXPECT_EQ(text.view().substr(59'988), "piece piece ");
  EXPECT_LE(buffers, 20);
}

TEST(SharedTextSnapshots, LeaveACopyThatHasGrownAsItIs) {
  SharedTextSnapshots snapshots;
  SharedText text = "a";
  snapshots.append("b", text);
  SharedText copy = snapshots.of(text);
  copy.append("-copy");
  snapshots.append("-text", text);
  EXPECT_EQ(copy, "ab-copy");
  EXPECT_EQ(text, "ab-text");
  EXPECT_EQ(snapshots.of(text), "ab-text");
}

TEST(SharedTextSnapshots, AreDroppedByOtherThreadsWhileTheTextGrows) {
  auto [producer, snapshotsOfText] = EventChannel<SharedText>::make();
  std::thread reader([&events = snapshotsOfText] {
    std::size_t size = 0;
    for (const SharedText& snapshot : events) EXPECT_EQ(snapshot.size(), size += 4);
    EXPECT_EQ(size, 40'000U);
  });
  SharedTextSnapshots snapshots;
  SharedText text;
  for (int step = 0; step < 10'000; ++step) {
    text.append("text");
    producer.yield(snapshots.of(text));
  }
  producer.finish();
  reader.join();
}

TEST(SharedText, LetsSeveralThreadsAppendToTheSameSnapshot) {
  constexpr int rounds = 2000;
  for (int round = 0; round < rounds; ++round) {
    SharedText common = "begin";
    common.append("-common");
    SharedText ends[3] = {common, common, common};
    std::latch start(3);
    std::vector<std::thread> threads;
    for (int index = 0; index < 3; ++index) {
      threads.emplace_back([&, index] {
        start.arrive_and_wait();
        for (int step = 0; step < 4; ++step) ends[index].append(std::string(5, static_cast<char>('0' + index)));
      });
    }
    for (auto& thread : threads) thread.join();
    for (int index = 0; index < 3; ++index) {
      ASSERT_EQ(ends[index], "begin-common" + std::string(20, static_cast<char>('0' + index)));
    }
    ASSERT_EQ(common, "begin-common");
  }
}

TEST(SharedText, StreamsAsItStands) {
  std::ostringstream stream;
  stream << SharedText("a\nb");
  EXPECT_EQ(stream.str(), "a\nb");
}

TEST(SharedText, IsAStringInJSON) {
  using Codec = ormel::coding::Codec<SharedText>;
  EXPECT_EQ(ormel::coding::decodeAs<SharedText>(ormel::JSONValue("text"), {}), "text");
  EXPECT_EQ(Codec::encode("text"), ormel::JSONValue("text"));
  EXPECT_THROW(ormel::coding::decodeAs<SharedText>(ormel::JSONValue(1), {}), ormel::DecodingError);
  EXPECT_THROW(ormel::coding::decodeAs<SharedText>(ormel::JSONValue(), {}), ormel::DecodingError);
}

TEST(SharedText, ConvertsAndConcatenatesLikeAString) {
  const SharedText text("ab");
  const std::string copy = text;
  EXPECT_EQ(copy, "ab");
  std::string assigned;
  assigned = text;
  assigned += text;
  EXPECT_EQ(assigned, "abab");
  const std::string string("s");
  const std::string_view view("v");
  static_assert(std::is_same_v<decltype(text + "c"), std::string>);
  EXPECT_EQ(text + "c", "abc");
  EXPECT_EQ("c" + text, "cab");
  EXPECT_EQ(text + string, "abs");
  EXPECT_EQ(string + text, "sab");
  EXPECT_EQ(text + view, "abv");
  EXPECT_EQ(view + text, "vab");
  EXPECT_EQ(text + text, "abab");
  EXPECT_EQ(text + '\n', "ab\n");
  EXPECT_EQ('-' + text + "-" + text, "-ab-ab");
  EXPECT_EQ(SharedText() + SharedText(), "");
}

TEST(SharedText, KnowsItsContinuations) {
  SharedText text("ab");
  const SharedText earlier = text;
  text.append("c");
  EXPECT_TRUE(text.isContinuationOf(earlier));
  EXPECT_TRUE(text.isContinuationOf(text));
  EXPECT_TRUE(text.isContinuationOf(SharedText()));
  EXPECT_TRUE(SharedText("abc").isContinuationOf(earlier));
  EXPECT_FALSE(earlier.isContinuationOf(text));
  EXPECT_FALSE(text.isContinuationOf("b"));
  EXPECT_FALSE(SharedText().isContinuationOf("a"));
}

}  // namespace
