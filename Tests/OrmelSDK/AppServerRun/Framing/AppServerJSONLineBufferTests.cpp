#include "OrmelSDK/AppServerRun/Framing/AppServerJSONLineBuffer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
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

/// Appends the bytes and pulls all lines.
std::vector<std::string> linesOf(AppServerJSONLineBuffer& buffer, std::string_view bytes) {
  std::vector<std::string> lines;
  buffer.append(bytes);
  while (const auto line = buffer.next()) lines.emplace_back(*line);
  return lines;
}

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
    for (auto& line : linesOf(buffer, {exact.data(), exact.size()})) result.lines.push_back(std::move(line));
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
  EXPECT_THAT(linesOf(buffer, "a\r\n\r\nb\n"), ElementsAre("a", "b"));
}

TEST(AppServerJSONLineBuffer, KeepsALineOfSpaces) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(linesOf(buffer, "  \n"), ElementsAre("  "));
}

TEST(AppServerJSONLineBuffer, DropsACarriageReturnThatCameInAnEarlierPiece) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(linesOf(buffer, "line\r"), IsEmpty());
  EXPECT_THAT(linesOf(buffer, "\nnext\n"), ElementsAre("line", "next"));
}

TEST(AppServerJSONLineBuffer, DropsOnlyOneCarriageReturnAheadOfTheLineFeed) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(linesOf(buffer, "\r\r\n"), ElementsAre("\r"));
}

TEST(AppServerJSONLineBuffer, KeepsACarriageReturnInsideOfALine) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(linesOf(buffer, "a\rb\n"), ElementsAre("a\rb"));
}

TEST(AppServerJSONLineBuffer, MovesOnFromALineFeedAtTheStart) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(linesOf(buffer, "\na\n"), ElementsAre("a"));
}

TEST(AppServerJSONLineBuffer, ReportsNothingForNoBytes) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(linesOf(buffer, ""), IsEmpty());
  EXPECT_THAT(linesOf(buffer, std::string_view()), IsEmpty());
  EXPECT_EQ(buffer.finish(), std::nullopt);
}

TEST(AppServerJSONLineBuffer, ReportsNothingForAStreamOfLineFeeds) {
  EXPECT_EQ(splitOf({std::string(100'000, '\n')}), Split{});
  EXPECT_EQ(splitOf(bytewise(std::string(1'000, '\n'))), Split{});
}

TEST(AppServerJSONLineBuffer, CutsManyLinesOfOnePiece) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(linesOf(buffer, "one\ntwo\nthree\nfo"), ElementsAre("one", "two", "three"));
  EXPECT_THAT(linesOf(buffer, "ur\n"), ElementsAre("four"));
}

TEST(AppServerJSONLineBuffer, GivesNothingMoreOnceTheBytesAreUsedUp) {
  AppServerJSONLineBuffer buffer;
  EXPECT_EQ(buffer.next(), std::nullopt);
  EXPECT_THAT(linesOf(buffer, "one\ntw"), ElementsAre("one"));
  EXPECT_EQ(buffer.next(), std::nullopt);
  EXPECT_THAT(linesOf(buffer, "o\n"), ElementsAre("two"));
  EXPECT_EQ(buffer.next(), std::nullopt);
}

TEST(AppServerJSONLineBuffer, KeepsALineReadableUntilTheNextIsPulled) {
  const std::string longText(500, 'x');
  AppServerJSONLineBuffer buffer;
  linesOf(buffer, "be");
  const std::string bytes = "gun\n" + longText + "\nb\xFF\nend\n";
  buffer.append(bytes);
  for (const std::string& expected : {"begun"s, longText, "b\xEF\xBF\xBD"s, "end"s}) {
    const auto line = buffer.next();
    ASSERT_TRUE(line);
    EXPECT_EQ(*line, expected);
    EXPECT_EQ(*line, expected);
  }
  EXPECT_EQ(buffer.next(), std::nullopt);
}

TEST(AppServerJSONLineBuffer, AssemblesOneLineFromManyPieces) {
  EXPECT_EQ(splitOf(bytewise("{\"a\":1}\r\n{\"b\":2}\n")), (Split{{"{\"a\":1}", "{\"b\":2}"}, std::nullopt}));
}

TEST(AppServerJSONLineBuffer, ReplacesInvalidBytesOfALine) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(linesOf(buffer, "good\na\xFFz\nalso good\n"), ElementsAre("good", "a\xEF\xBF\xBDz", "also good"));
}

TEST(AppServerJSONLineBuffer, RepairsACharacterThatTheLineFeedCutsOff) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(linesOf(buffer, "a\xE2\x82\nb\n"), ElementsAre("a\xEF\xBF\xBD", "b"));
}

TEST(AppServerJSONLineBuffer, KeepsACharacterThatIsCutBetweenTwoPieces) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(linesOf(buffer, "\xE2"), IsEmpty());
  EXPECT_THAT(linesOf(buffer, "\x82"), IsEmpty());
  EXPECT_THAT(linesOf(buffer, "\xAC\n"), ElementsAre("\xE2\x82\xAC"));
}

TEST(AppServerJSONLineBuffer, KeepsZeroBytes) {
  AppServerJSONLineBuffer buffer;
  EXPECT_THAT(linesOf(buffer, "a\0b\n"sv), ElementsAre("a\0b"s));
}

TEST(AppServerJSONLineBuffer, FinishesAnEmptyStreamWithNothing) {
  AppServerJSONLineBuffer buffer;
  EXPECT_EQ(buffer.finish(), std::nullopt);
}

TEST(AppServerJSONLineBuffer, FinishesWithTheTailWithoutItsCarriageReturn) {
  AppServerJSONLineBuffer buffer;
  linesOf(buffer, "abc\r");
  EXPECT_EQ(buffer.finish(), "abc");
  EXPECT_EQ(buffer.finish(), std::nullopt);
}

TEST(AppServerJSONLineBuffer, DropsOnlyOneCarriageReturnOfTheTail) {
  AppServerJSONLineBuffer buffer;
  linesOf(buffer, "abc\r\r");
  EXPECT_EQ(buffer.finish(), "abc\r");
}

TEST(AppServerJSONLineBuffer, FinishesALoneCarriageReturnWithNothing) {
  AppServerJSONLineBuffer buffer;
  linesOf(buffer, "\r");
  EXPECT_EQ(buffer.finish(), std::nullopt);
  EXPECT_THAT(linesOf(buffer, "x\n"), ElementsAre("x"));
}

TEST(AppServerJSONLineBuffer, FinishesATailOfSpacesAsItIs) {
  AppServerJSONLineBuffer buffer;
  linesOf(buffer, "line\n   ");
  EXPECT_EQ(buffer.finish(), "   ");
}

TEST(AppServerJSONLineBuffer, RepairsTheTail) {
  AppServerJSONLineBuffer buffer;
  linesOf(buffer, "tail\xC3");
  EXPECT_EQ(buffer.finish(), "tail\xEF\xBF\xBD");
}

TEST(AppServerJSONLineBuffer, StartsAnewAfterFinish) {
  AppServerJSONLineBuffer buffer;
  linesOf(buffer, "old");
  EXPECT_EQ(buffer.finish(), "old");
  EXPECT_THAT(linesOf(buffer, "new\n"), ElementsAre("new"));
}

TEST(AppServerJSONLineBuffer, AssemblesALineOfAHundredMegabytes) {
  constexpr std::size_t pieceSize = 4096;
  constexpr std::size_t pieceCount = 25'000;
  const std::string piece(pieceSize, 'x');
  AppServerJSONLineBuffer buffer;
  for (std::size_t count = 0; count < pieceCount; ++count) ASSERT_THAT(linesOf(buffer, piece), IsEmpty());
  const auto lines = linesOf(buffer, "\r\nnext\n");
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
      buffer.append({exact.data(), exact.size()});
      while (const auto line = buffer.next()) values.push_back(ormel::detail::decodePaddedJSON(*line));
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
    const auto touch = [&](std::string_view line) {
      ++lines;
      for (std::size_t at = 0; at < ormel::detail::jsonPadding; ++at) {
        sum += static_cast<unsigned char>(line.data()[line.size() + at]);
      }
    };
    buffer.append({exact.data(), exact.size()});
    while (const auto line = buffer.next()) touch(*line);
    EXPECT_EQ(lines, 3u) << sum;
    if (const auto tail = buffer.finish()) touch(*tail);
    ASSERT_EQ(lines, rest == 0 ? 3u : 4u) << sum;
  }
}

}  // namespace
