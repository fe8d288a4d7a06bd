#include "OrmelSDK/AppServerRun/Framing/AppServerJSONLineBuffer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "OrmelSDK/JSON/JSONDecoding.h"
#include "OrmelSDK/Text/UTF8.h"

namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using ormel::JSONValue;
using ormel::detail::AppServerJSONLineBuffer;
using testing::ElementsAre;
using testing::IsEmpty;

struct Split {
  std::vector<std::string> lines;
  std::optional<std::string> tail;

  friend bool operator==(const Split&, const Split&) = default;
};

// Feeds the pieces through a heap block of exactly their size, so that a sanitizer sees any byte read beyond them.
Split splitOf(const std::vector<std::string>& pieces) {
  AppServerJSONLineBuffer buffer;
  Split result;
  for (const auto& piece : pieces) {
    const std::vector<char> exact(piece.begin(), piece.end());
    for (auto& line : buffer.append({exact.data(), exact.size()})) result.lines.push_back(std::move(line));
  }
  result.tail = buffer.finish();
  EXPECT_EQ(buffer.finish(), std::nullopt);
  return result;
}

// The rules of a line once more, in the plainest form.
Split plainSplitOf(std::string_view bytes) {
  const auto withoutCarriageReturn = [](std::string line) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return line;
  };
  Split result;
  std::string line;
  for (const char byte : bytes) {
    if (byte != '\n') {
      line += byte;
      continue;
    }
    line = withoutCarriageReturn(line);
    if (!line.empty()) result.lines.push_back(ormel::repairedUTF8(line));
    line.clear();
  }
  line = withoutCarriageReturn(line);
  if (!line.empty()) result.tail = ormel::repairedUTF8(line);
  return result;
}

std::vector<std::string> bytewise(std::string_view bytes) {
  std::vector<std::string> pieces;
  for (const char byte : bytes) pieces.emplace_back(1, byte);
  return pieces;
}

std::vector<std::string> randomPieces(std::string_view bytes, std::mt19937& random) {
  std::vector<std::string> pieces;
  while (!bytes.empty()) {
    const std::size_t longest = random() % 2 == 0 ? 4 : 300;
    const std::size_t size = std::min<std::size_t>(bytes.size(), random() % (longest + 1));
    pieces.emplace_back(bytes.substr(0, size));
    bytes.remove_prefix(size);
  }
  return pieces;
}

std::string randomStream(std::mt19937& random) {
  constexpr std::array vocabulary = {
      "a"sv, "\r"sv, "\n"sv, "\r\n"sv, "\xC3\xA9"sv, "\xFF"sv, "\xE2\x82"sv, "\xE2\x82\xAC"sv, "{\"key\":[1,2]}"sv,
      "\0"sv};
  std::string stream;
  const std::size_t count = random() % 200;
  for (std::size_t index = 0; index < count; ++index) {
    const std::string_view part = vocabulary[random() % vocabulary.size()];
    const std::size_t times = random() % 20 == 0 ? random() % 100 : 1;
    for (std::size_t time = 0; time < times; ++time) stream += part;
  }
  return stream;
}

TEST(AppServerJSONLineBuffer, DropsBlankLines) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(buffer.append("a\r\n\r\nb\n"), ElementsAre("a", "b"));
}

TEST(AppServerJSONLineBuffer, KeepsALineOfSpaces) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(buffer.append("  \n"), ElementsAre("  "));
}

TEST(AppServerJSONLineBuffer, DropsACarriageReturnThatCameInAnEarlierPiece) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(buffer.append("line\r"), IsEmpty());
  EXPECT_THAT(buffer.append("\nnext\n"), ElementsAre("line", "next"));
}

TEST(AppServerJSONLineBuffer, DropsOnlyOneCarriageReturnAheadOfTheLineFeed) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(buffer.append("\r\r\n"), ElementsAre("\r"));
}

TEST(AppServerJSONLineBuffer, KeepsACarriageReturnInsideOfALine) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(buffer.append("a\rb\n"), ElementsAre("a\rb"));
}

TEST(AppServerJSONLineBuffer, MovesOnFromALineFeedAtTheStart) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(buffer.append("\na\n"), ElementsAre("a"));
}

TEST(AppServerJSONLineBuffer, ReportsNothingForNoBytes) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(buffer.append(""), IsEmpty());
  EXPECT_THAT(buffer.append(std::string_view()), IsEmpty());
  EXPECT_EQ(buffer.finish(), std::nullopt);
}

TEST(AppServerJSONLineBuffer, ReportsNothingForAStreamOfLineFeeds) {
  EXPECT_EQ(splitOf({std::string(100'000, '\n')}), Split{});
  EXPECT_EQ(splitOf(bytewise(std::string(1'000, '\n'))), Split{});
}

TEST(AppServerJSONLineBuffer, CutsManyLinesOfOnePiece) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(buffer.append("one\ntwo\nthree\nfo"), ElementsAre("one", "two", "three"));
  EXPECT_THAT(buffer.append("ur\n"), ElementsAre("four"));
}

TEST(AppServerJSONLineBuffer, StopsBehindAnyLineAndGoesOnThere) {
  const std::string bytes = "one\r\n\nt\xFFwo\nthree\n" + std::string(200, 'x') + "\nlast\ntail";
  const Split expected = splitOf({bytes});
  ASSERT_EQ(expected.lines.size(), 5U);
  for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
    AppServerJSONLineBuffer buffer;
    Split stopped;
    for (const std::string& piece : {bytes.substr(0, cut), bytes.substr(cut)}) {
      const std::vector<char> exact(piece.begin(), piece.end());
      std::string_view rest(exact.data(), exact.size());
      bool goesOn = false;
      while (!goesOn) {
        goesOn = true;
        rest = buffer.appendWhile(rest, [&](std::string_view line) {
          EXPECT_TRUE(goesOn);
          stopped.lines.emplace_back(line);
          return goesOn = false;
        });
      }
      EXPECT_EQ(rest, "");
    }
    stopped.tail = buffer.finish();
    EXPECT_EQ(stopped, expected) << "cut at " << cut;
  }
}

TEST(AppServerJSONLineBuffer, AssemblesOneLineFromManyPieces) {
  EXPECT_EQ(splitOf(bytewise("{\"a\":1}\r\n{\"b\":2}\n")), (Split{{"{\"a\":1}", "{\"b\":2}"}, std::nullopt}));
}

TEST(AppServerJSONLineBuffer, ReplacesInvalidBytesOfALine) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(buffer.append("good\na\xFFz\nalso good\n"), ElementsAre("good", "a\xEF\xBF\xBDz", "also good"));
}

TEST(AppServerJSONLineBuffer, RepairsACharacterThatTheLineFeedCutsOff) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(buffer.append("a\xE2\x82\nb\n"), ElementsAre("a\xEF\xBF\xBD", "b"));
}

TEST(AppServerJSONLineBuffer, KeepsACharacterThatIsCutBetweenTwoPieces) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(buffer.append("\xE2"), IsEmpty());
  EXPECT_THAT(buffer.append("\x82"), IsEmpty());
  EXPECT_THAT(buffer.append("\xAC\n"), ElementsAre("\xE2\x82\xAC"));
}

TEST(AppServerJSONLineBuffer, KeepsZeroBytes) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(buffer.append("a\0b\n"sv), ElementsAre("a\0b"s));
}

TEST(AppServerJSONLineBuffer, FinishesAnEmptyStreamWithNothing) {
  AppServerJSONLineBuffer buffer;
  EXPECT_EQ(buffer.finish(), std::nullopt);
}

TEST(AppServerJSONLineBuffer, FinishesWithTheTailWithoutItsCarriageReturn) {
  AppServerJSONLineBuffer buffer;
  buffer.append("abc\r");
  EXPECT_EQ(buffer.finish(), "abc");
  EXPECT_EQ(buffer.finish(), std::nullopt);
}

TEST(AppServerJSONLineBuffer, DropsOnlyOneCarriageReturnOfTheTail) {
  AppServerJSONLineBuffer buffer;
  buffer.append("abc\r\r");
  EXPECT_EQ(buffer.finish(), "abc\r");
}

TEST(AppServerJSONLineBuffer, FinishesALoneCarriageReturnWithNothing) {
  AppServerJSONLineBuffer buffer;
  buffer.append("\r");
  EXPECT_EQ(buffer.finish(), std::nullopt);
  EXPECT_THAT(buffer.append("x\n"), ElementsAre("x"));
}

TEST(AppServerJSONLineBuffer, FinishesATailOfSpacesAsItIs) {
  AppServerJSONLineBuffer buffer;
  buffer.append("line\n   ");
  EXPECT_EQ(buffer.finish(), "   ");
}

TEST(AppServerJSONLineBuffer, RepairsTheTail) {
  AppServerJSONLineBuffer buffer;
  buffer.append("tail\xC3");
  EXPECT_EQ(buffer.finish(), "tail\xEF\xBF\xBD");
}

TEST(AppServerJSONLineBuffer, StartsAnewAfterFinish) {
  AppServerJSONLineBuffer buffer;
  buffer.append("old");
  EXPECT_EQ(buffer.finish(), "old");
  EXPECT_THAT(buffer.append("new\n"), ElementsAre("new"));
}

TEST(AppServerJSONLineBuffer, AssemblesALineOfAHundredMegabytes) {
  constexpr std::size_t pieceSize = 4096;
  constexpr std::size_t pieceCount = 25'000;
  const std::string piece(pieceSize, 'x');
  AppServerJSONLineBuffer buffer;
  for (std::size_t count = 0; count < pieceCount; ++count) ASSERT_THAT(buffer.append(piece), IsEmpty());
  const auto lines = buffer.append("\r\nnext\n");
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].size(), pieceSize * pieceCount);
  EXPECT_EQ(lines[0].find_first_not_of('x'), std::string::npos);
  EXPECT_EQ(lines[1], "next");
}

TEST(AppServerJSONLineBuffer, GivesTheSameLinesHoweverTheStreamIsCut) {
  for (unsigned seed = 0; seed < 2'000; ++seed) {
    std::mt19937 random(seed);
    const std::string stream = randomStream(random);
    const Split expected = plainSplitOf(stream);
    ASSERT_EQ(splitOf({stream}), expected) << "seed " << seed;
    ASSERT_EQ(splitOf(bytewise(stream)), expected) << "seed " << seed;
    ASSERT_EQ(splitOf(randomPieces(stream, random)), expected) << "seed " << seed;
  }
}

TEST(AppServerJSONLineBuffer, HandsOutLinesThatCanBeDecodedInPlace) {
  const std::string longText(500, 'x');
  const std::string stream = "{\"a\":1}\n\"" + longText + "\"\n[true]\r\n\"\xFF\"\n7\n";
  for (const auto& pieces : {std::vector<std::string>{stream}, bytewise(stream)}) {
    AppServerJSONLineBuffer buffer;
    std::vector<JSONValue> values;
    for (const auto& piece : pieces) {
      const std::vector<char> exact(piece.begin(), piece.end());
      buffer.append({exact.data(), exact.size()},
                    [&](std::string_view line) { values.push_back(ormel::detail::decodePaddedJSON(line)); });
    }
    EXPECT_THAT(values, ElementsAre(JSONValue::object({{"a", 1}}), JSONValue(longText), JSONValue::array({true}),
                                    JSONValue("\xEF\xBF\xBD"), JSONValue(7)));
  }
}

// Every byte of the padding is touched, which a sanitizer checks.
TEST(AppServerJSONLineBuffer, HasReadableBytesBehindEveryLine) {
  for (std::size_t rest = 0; rest < 2 * ormel::detail::jsonPadding; ++rest) {
    const std::string text = "line\nother\r\n\xFF\n" + std::string(rest, 'r');
    const std::vector<char> exact(text.begin(), text.end());
    AppServerJSONLineBuffer buffer;
    std::size_t lines = 0;
    unsigned sum = 0;
    buffer.append({exact.data(), exact.size()}, [&](std::string_view line) {
      ++lines;
      for (std::size_t at = 0; at < ormel::detail::jsonPadding; ++at) {
        sum += static_cast<unsigned char>(line.data()[line.size() + at]);
      }
    });
    ASSERT_EQ(lines, 3u) << sum;
  }
}

TEST(AppServerJSONLineBuffer, IsUsableAfterTheReceiverOfALineThrew) {
  for (const auto* const start : {"", "sta"}) {
    AppServerJSONLineBuffer buffer;
    buffer.append(start);
    EXPECT_THROW(buffer.append("rt\nlost\n", [](std::string_view) { throw std::runtime_error("refused"); }),
                 std::runtime_error);
    EXPECT_THAT(buffer.append("next\n"), ElementsAre("next"));
  }
}

}  // namespace
