#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "OrmelSDK/JSON/CodingErrors.h"
#include "OrmelSDK/JSON/JSONDecoding.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "Support/Sanitizers.h"

namespace {

using ormel::DecodingError;
using ormel::JSONSyntaxError;
using ormel::JSONValue;
using Kind = JSONValue::Kind;

std::optional<DecodingError> decodingFailure(std::string_view text) {
  try {
    (void)JSONValue::decode(text);
  } catch (const DecodingError& error) {
    return error;
  }
  return std::nullopt;
}

struct SyntaxFailure {
  std::string reason;
  std::size_t byteOffset;
  bool operator==(const SyntaxFailure&) const = default;
  friend std::ostream& operator<<(std::ostream& stream, const SyntaxFailure& failure) {
    return stream << failure.reason << " at " << failure.byteOffset;
  }
};

std::optional<SyntaxFailure> syntaxFailure(std::string_view text) {
  const auto error = decodingFailure(text);
  if (!error) return std::nullopt;
  EXPECT_EQ(error->kind(), DecodingError::Kind::dataCorrupted);
  EXPECT_TRUE(error->context().codingPath.empty());
  EXPECT_EQ(error->context().debugDescription, "The given data was not valid JSON.");
  const auto* syntax = dynamic_cast<const JSONSyntaxError*>(error->context().underlyingError.get());
  if (!syntax) return std::nullopt;
  return SyntaxFailure{syntax->reason(), syntax->byteOffset()};
}

std::string nestedArrays(std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); }

std::string nestedObjects(std::size_t depth) {
  std::string text;
  for (std::size_t level = 1; level < depth; ++level) text += R"({"a":)";
  return text + "{}" + std::string(depth - 1, '}');
}

TEST(JSONDecoding, ReadsEachOfTheSixCases) {
  EXPECT_EQ(JSONValue::decode(R"("text")").kind(), Kind::string);
  EXPECT_EQ(JSONValue::decode("1.5").kind(), Kind::number);
  EXPECT_EQ(JSONValue::decode("true").kind(), Kind::bool_);
  EXPECT_EQ(JSONValue::decode("{}").kind(), Kind::object);
  EXPECT_EQ(JSONValue::decode("[]").kind(), Kind::array);
  EXPECT_EQ(JSONValue::decode("null").kind(), Kind::null);
}

TEST(JSONDecoding, NumbersTheCasesInTheirOrder) {
  EXPECT_EQ(static_cast<int>(Kind::string), 0);
  EXPECT_EQ(static_cast<int>(Kind::number), 1);
  EXPECT_EQ(static_cast<int>(Kind::bool_), 2);
  EXPECT_EQ(static_cast<int>(Kind::object), 3);
  EXPECT_EQ(static_cast<int>(Kind::array), 4);
  EXPECT_EQ(static_cast<int>(Kind::null), 5);
}

TEST(JSONDecoding, DoesNotCoerceBetweenNumbersAndTexts) {
  EXPECT_EQ(JSONValue::decode("1").kind(), Kind::number);
  EXPECT_EQ(JSONValue::decode(R"("1")").kind(), Kind::string);
  EXPECT_EQ(JSONValue::decode("1").boolValue(), std::nullopt);
}

TEST(JSONDecoding, AcceptsAnyValueAtTheTopLevelAndWhiteSpaceAroundIt) {
  EXPECT_EQ(JSONValue::decode(" \t\r\n 7 \n").numberValue(), 7.0);
  EXPECT_EQ(JSONValue::decode(" null ").kind(), Kind::null);
}

TEST(JSONDecoding, KeepsPresentNullApartFromAbsence) {
  const JSONValue value = JSONValue::decode(R"({"a":null,"b":{},"c":[]})");
  ASSERT_NE(value.find("a"), nullptr);
  EXPECT_TRUE(value.find("a")->isNull());
  EXPECT_EQ(value.find("b")->kind(), Kind::object);
  EXPECT_EQ(value.find("c")->kind(), Kind::array);
  EXPECT_EQ(value.find("d"), nullptr);
}

TEST(JSONDecoding, ReadsOneAndOnePointZeroAsTheSameNumber) {
  EXPECT_EQ(JSONValue::decode("1"), JSONValue::decode("1.0"));
  EXPECT_EQ(JSONValue::decode("1.0").encode(), "1");
}

TEST(JSONDecoding, KeepsIntegersUpToTwoToThe53AndRoundsBeyond) {
  EXPECT_EQ(JSONValue::decode("9007199254740992").encode(), "9007199254740992");
  EXPECT_EQ(JSONValue::decode("-9007199254740991").encode(), "-9007199254740991");
  EXPECT_EQ(JSONValue::decode("9007199254740993").numberValue(), 9007199254740992.0);
  EXPECT_EQ(JSONValue::decode("9007199254740993").encode(), "9007199254740992");
}

TEST(JSONDecoding, ReadsIntegersBeyond64BitsAsTheNearestDouble) {
  const std::pair<std::string_view, double> cases[] = {
      {"18446744073709551615", 18446744073709551615.0},
      {"18446744073709551616", 18446744073709551616.0},
      {"-9223372036854775808", -0x1p63},
      {"-9223372036854775809", -0x1p63},
      {"123456789012345678901234567890", 123456789012345678901234567890.0},
      {"-999999999999999999999999999999", -999999999999999999999999999999.0},
      {"100000000000000000000000000000000000000000000000000", 1e50},
  };
  for (const auto& [text, number] : cases) EXPECT_EQ(JSONValue::decode(text).numberValue(), number) << text;
}

TEST(JSONDecoding, KeepsTheRestOfALineThatHoldsAWideInteger) {
  const JSONValue value = JSONValue::decode(
      R"({"id":123456789012345678901234567890,"text":"123456789012345678901234567890 \" [","a":[1e3,-0.5,99999999999999999999]})");
  EXPECT_EQ(value.find("id")->numberValue(), 123456789012345678901234567890.0);
  EXPECT_EQ(value.find("text")->stringValue(), "123456789012345678901234567890 \" [");
  EXPECT_EQ(value.find("a")->encode(), "[1000,-0.5,1e+20]");
}

/// The text of a value that is read in each of the ways that there are, which must agree.
std::string readAndWritten(const std::string& text) {
  const std::string written = JSONValue::decode(text).encode();
  EXPECT_EQ(ormel::detail::decodeThroughDocument(text).encode(), written) << text.substr(0, 100);
  ormel::detail::ByteBuffer buffer;
  std::memcpy(buffer.room(text.size() + ormel::detail::jsonPadding), text.data(), text.size());
  buffer.commit(text.size());
  EXPECT_EQ(ormel::detail::decodePaddedJSON(std::move(buffer)).encode(), written) << text.substr(0, 100);
  return written;
}

TEST(JSONDecoding, KeepsTheSignOfMinusZero) {
  EXPECT_TRUE(std::signbit(*JSONValue::decode("-0").numberValue()));
  EXPECT_FALSE(std::signbit(*JSONValue::decode("0").numberValue()));
  EXPECT_EQ(JSONValue::decode("-0").intValue(), 0);
  EXPECT_EQ(JSONValue::decode("-0"), JSONValue::decode("0"));
  const std::pair<std::string, std::string> cases[] = {
      {"-0", "-0"},
      {" -0 ", "-0"},
      {"-0.0", "-0"},
      {"-0e5", "-0"},
      {"-0E-400", "-0"},
      {"[-0]", "[-0]"},
      {"[0,-0,0]", "[0,-0,0]"},
      {"[ 0 ,\t-0\n,\r-0]", "[0,-0,-0]"},
      {R"({"a":-0})", R"({"a":-0})"},
      {R"({"a":{"b":[1,-0,123456789012345678901234567890]}})", R"({"a":{"b":[1,-0,1.2345678901234568e+29]}})"},
      {R"([0,"-0"," -0 ",":-0,","\" ,-0",-0.5,-1])", R"([0,"-0"," -0 ",":-0,","\" ,-0",-0.5,-1])"},
      {R"({"-0":0})", R"({"-0":0})"},
      {R"(["2026-01-02","a-0",0])", R"(["2026-01-02","a-0",0])"},
  };
  for (const auto& [text, written] : cases) EXPECT_EQ(readAndWritten(text), written) << text;
}

TEST(JSONDecoding, FindsMinusZeroAtEveryPlaceInTextsOfEverySize) {
  for (std::size_t length = 0; length < 200; ++length) {
    const std::string ahead = "[\"" + std::string(length, '-') + "\",0,";
    EXPECT_EQ(readAndWritten(ahead + "-0]"), ahead + "-0]") << length;
    EXPECT_EQ(readAndWritten(ahead + "-0,\"" + std::string(length, '-') + "\"]").find(",-0,"), length + 5) << length;
  }
  for (const std::size_t size : {std::size_t{300} << 10, std::size_t{3} << 20, std::size_t{17} << 20}) {
    const std::string ahead = "[\"" + std::string(size, 'x') + "\",0,";
    EXPECT_TRUE(readAndWritten(ahead + "-0]").ends_with("\",0,-0]")) << size;
    EXPECT_TRUE(readAndWritten(ahead + "\",-0\"]").ends_with("\",0,\",-0\"]")) << size;
  }
}

TEST(JSONDecoding, RefusesWhatOnlyLooksLikeMinusZero) {
  for (const std::string_view text : {"[0,-0-]", "[0,-0x]", "-00", "[-0", "[0,- 0]", "{-0:0}"}) {
    EXPECT_TRUE(decodingFailure(text)) << text;
  }
}

TEST(JSONDecoding, ReadsDoublesExactly) {
  std::mt19937_64 random(20261121);
  for (int round = 0; round < 20000; ++round) {
    const std::uint64_t bits = random();
    double number;
    std::memcpy(&number, &bits, sizeof number);
    if (!std::isfinite(number)) continue;
    const std::string text = JSONValue(number).encode();
    EXPECT_EQ(JSONValue::decode(text).numberValue(), number) << text;
  }
}

TEST(JSONDecoding, RefusesANumberOutsideTheRangeOfADouble) {
  for (const std::string_view text : {"1e400", "-1e400", "[1,{\"a\":1e999}]"}) {
    const auto error = decodingFailure(text);
    ASSERT_TRUE(error) << text;
    EXPECT_EQ(error->kind(), DecodingError::Kind::dataCorrupted);
    EXPECT_TRUE(error->context().codingPath.empty());
    EXPECT_EQ(error->context().debugDescription, "Unsupported JSON value");
    EXPECT_EQ(error->context().underlyingError, nullptr);
    EXPECT_STREQ(error->what(), "Unsupported JSON value");
  }
  const auto hugeInteger = decodingFailure("1" + std::string(400, '0'));
  ASSERT_TRUE(hugeInteger);
  EXPECT_STREQ(hugeInteger->what(), "Unsupported JSON value");
}

TEST(JSONDecoding, ReadsANumberBelowTheRangeOfADoubleAsZero) {
  EXPECT_EQ(JSONValue::decode("1e-400").numberValue(), 0.0);
}

TEST(JSONDecoding, SaysWhatIsWrongAndWhere) {
  const std::pair<std::string_view, SyntaxFailure> cases[] = {
      {"", {"Unexpected end of text", 0}},
      {"  ", {"Unexpected end of text", 2}},
      {"[1", {"Unexpected end of text", 2}},
      {"[1,", {"Unexpected end of text", 3}},
      {R"({"a")", {"Unexpected end of text", 4}},
      {R"({"a":)", {"Unexpected end of text", 5}},
      {"-", {"Unexpected end of text", 1}},
      {"nope", {"Unexpected character", 0}},
      {"tru", {"Unexpected character", 0}},
      {"[1,]", {"Unexpected character", 3}},
      {"{,}", {"Expected a key", 1}},
      {"{1:2}", {"Expected a key", 1}},
      {R"({"a":1,})", {"Expected a key", 7}},
      {R"({"a" 1})", {"Expected ':'", 5}},
      {R"({"a":1 "b":2})", {"Expected ',' or '}'", 7}},
      {"[1 2]", {"Expected ',' or ']'", 3}},
      {"[1}", {"Expected ',' or ']'", 2}},
      {"1 2", {"Unexpected text after the value", 2}},
      {"{}{}", {"Unexpected text after the value", 2}},
      {"01", {"A number has a leading zero", 2}},
      {"1.", {"Unexpected end of text", 2}},
      {"1.x", {"Expected a digit", 2}},
      {"[1e]", {"Expected a digit", 3}},
      {"[-]", {"Expected a digit", 2}},
      {"\"abc", {"A string is not closed", 4}},
      {"\"abc\\", {"A string is not closed", 5}},
      {"\"a\nb\"", {"A control character in a string is not escaped", 2}},
      {R"("\x")", {"Invalid escape", 2}},
      {R"("\u12g4")", {"Invalid escape", 5}},
      {R"("\ud800")", {"A surrogate stands alone", 7}},
      {R"("\ud800x")", {"A surrogate stands alone", 7}},
      {R"("\udc00")", {"A surrogate stands alone", 7}},
      {R"("\ud83dA")", {"A surrogate stands alone", 7}},
      {R"("\ud83d\u0041")", {"A surrogate stands alone", 13}},
      {"\xEF\xBB\xBF{}", {"Unexpected character", 0}},
      {"\"a\xFF\"", {"Invalid UTF-8", 2}},
      {"\"\xED\xA0\x80\"", {"Invalid UTF-8", 1}},
  };
  for (const auto& [text, failure] : cases) EXPECT_EQ(syntaxFailure(text), failure) << text;
}

TEST(JSONDecoding, DescribesASyntaxErrorWithItsReason) {
  const auto error = decodingFailure("[1,]");
  ASSERT_TRUE(error);
  EXPECT_STREQ(error->what(), "The given data was not valid JSON. (Unexpected character at byte 3)");
}

TEST(JSONDecoding, ReadsSurrogatePairsAndEscapes) {
  const JSONValue value = JSONValue::decode(R"("\ud83d\ude00\u00e9\"\\\/\b\f\n\r\t\u0000!")");
  EXPECT_EQ(value.stringValue(), std::string_view("\xF0\x9F\x98\x80\xC3\xA9\"\\/\b\f\n\r\t\0!", 16));
}

TEST(JSONDecoding, ReadsNestingOfUpTo512LevelsAndRefusesMore) {
  EXPECT_EQ(JSONValue::decode(nestedArrays(512)).encode(), nestedArrays(512));
  EXPECT_EQ(syntaxFailure(nestedArrays(513)), (SyntaxFailure{"Too many nested arrays or objects", 512}));
  EXPECT_EQ(syntaxFailure(nestedArrays(100'000)), (SyntaxFailure{"Too many nested arrays or objects", 512}));
  EXPECT_EQ(syntaxFailure(std::string(100'000, '[')), (SyntaxFailure{"Too many nested arrays or objects", 512}));
  EXPECT_EQ(JSONValue::decode(nestedObjects(512)).encode(), nestedObjects(512));
  EXPECT_EQ(syntaxFailure(nestedObjects(513)), (SyntaxFailure{"Too many nested arrays or objects", 512 * 5}));
  const std::string unclosed = nestedObjects(600).substr(0, 599 * 5);
  EXPECT_EQ(syntaxFailure(unclosed), (SyntaxFailure{"Too many nested arrays or objects", 512 * 5}));
}

TEST(JSONDecoding, CountsDepthTheSameWayInTextsOfEverySize) {
  // White space brings the text to the sizes at which the reader changes its way.
  for (const std::size_t padding : {0u, 300'000u, 3'000'000u}) {
    const std::string space(padding, ' ');
    for (const std::string_view inner : {"", "1"}) {
      const std::string deepest = std::string(512, '[').append(inner) + std::string(512, ']');
      for (const std::string& text : {deepest + space, "[" + deepest + "]" + space}) {
        const bool allowed = text.starts_with(deepest);
        ormel::detail::ByteBuffer buffer;
        buffer.append(text);
        (void)buffer.room(ormel::detail::jsonPadding);
        if (allowed) {
          EXPECT_EQ(JSONValue::decode(text).encode(), deepest) << padding;
          EXPECT_EQ(ormel::detail::decodePaddedJSON(std::move(buffer)).encode(), deepest) << padding;
        } else {
          EXPECT_EQ(syntaxFailure(text), (SyntaxFailure{"Too many nested arrays or objects", 512})) << padding;
          EXPECT_THROW(ormel::detail::decodePaddedJSON(std::move(buffer)), DecodingError) << padding;
        }
      }
    }
  }
}

TEST(JSONDecoding, CountsDepthTheSameWayWithAWideIntegerInside) {
  const std::string wide = "123456789012345678901234567890";
  EXPECT_NO_THROW(JSONValue::decode(std::string(512, '[') + wide + std::string(512, ']')));
  EXPECT_TRUE(syntaxFailure(std::string(513, '[') + wide + std::string(513, ']')));
}

TEST(JSONDecoding, LetsTheLastValueOfARepeatedKeyStand) {
  const JSONValue value = JSONValue::decode(R"({"a":1,"b":2,"a":[3],"c":4,"a":5})");
  EXPECT_EQ(value.objectValue()->size(), 3u);
  EXPECT_EQ(value.find("a")->numberValue(), 5.0);
  EXPECT_EQ(value.find("b")->numberValue(), 2.0);
  EXPECT_EQ(value.find("c")->numberValue(), 4.0);
}

TEST(JSONDecoding, TakesCanonicallyEquivalentKeysAsOne) {
  const JSONValue value = JSONValue::decode("{\"\u00e9\":1,\"e\u0301\":2}");
  EXPECT_EQ(value.objectValue()->size(), 1u);
  EXPECT_EQ(value.find("\u00e9")->numberValue(), 2.0);
  EXPECT_EQ(value.find("e\u0301")->numberValue(), 2.0);
}

TEST(JSONDecoding, ReadsALargeObjectWithRepeatedKeys) {
  std::string text = "{";
  for (int round = 0; round < 2; ++round) {
    for (int key = 0; key < 1000; ++key) {
      text += "\"key" + std::to_string(key) + "\":" + std::to_string(round * 1000 + key) + ",";
    }
  }
  text += "\"last\":true}";
  const JSONValue value = JSONValue::decode(text);
  EXPECT_EQ(value.objectValue()->size(), 1001u);
  for (int key = 0; key < 1000; ++key) {
    const auto* found = value.find("key" + std::to_string(key));
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->numberValue(), 1000.0 + key);
  }
  EXPECT_EQ(value.find("key1000"), nullptr);
  EXPECT_EQ(value.find(""), nullptr);
  EXPECT_EQ(JSONValue::decode(value.encode()), value);
}

TEST(JSONDecoding, ReadsTextsOfEverySizeAroundItsOwnLimits) {
  // The sizes at which the reader changes from copying to taking over its buffers, and to a parser of its own.
  for (const std::size_t size : {0u, 1u, 7u, 8u, 9u, 4093u, 4095u, 262'141u, 262'142u, 262'143u, 262'144u, 2'097'149u,
                                 2'097'151u, 2'097'153u, 5'000'000u}) {
    const std::string content(size, 'x');
    const JSONValue value = JSONValue::decode('"' + content + '"');
    EXPECT_EQ(value.stringValue(), content) << size;
    EXPECT_EQ(JSONValue::decode("[1]").encode(), "[1]");
  }
}

TEST(JSONDecoding, ReadsManyShortTextsInALargeMessage) {
  std::string text = "[";
  for (int count = 0; count < 900'000; ++count) text += R"("",)";
  text += R"({"a":"b"}])";
  const JSONValue value = JSONValue::decode(text);
  EXPECT_EQ(value.arrayValue()->size(), 900'001u);
  EXPECT_EQ(value.arrayValue()->back().encode(), R"({"a":"b"})");
  EXPECT_EQ(value.encode(), text);
}

/// An element of every kind that differs in how many tokens it takes and in what the reader keeps of each.
std::vector<std::string> kindsOfElement() {
  const std::string deep = std::string(400, '[') + std::string(400, ']');
  return {"1", "-1.5", "[]", "{}", "\"\"", "\"text\"", "true", "null", deep, R"({"a":{"b":[1,{}]},"c":"d"})"};
}

/// An array of more than 16 MiB, beyond which the reader is sparing with memory, as its writer would write it: long
/// stretches of one kind of element, in an order of their own.
std::string hugeArray(unsigned seed) {
  constexpr std::size_t stretchSize = std::size_t{2} << 20;
  std::vector<std::string> kinds = kindsOfElement();
  std::shuffle(kinds.begin(), kinds.end(), std::mt19937(seed));
  std::string text = "[";
  for (const std::string& kind : kinds) {
    for (const std::size_t end = text.size() + stretchSize; text.size() < end;) text += kind + ',';
  }
  text.back() = ']';
  return text;
}

TEST(JSONDecoding, ReadsHugeMessagesOfAnyMixture) {
  for (unsigned seed = 1; seed <= (ormel::testing::isSanitized ? 2 : 4); ++seed) {
    const std::string text = hugeArray(seed);
    EXPECT_TRUE(JSONValue::decode(text).encode() == text) << "seed " << seed;
  }
}

TEST(JSONDecoding, NamesThePlaceOfAFaultAtTheEndOfAHugeMessage) {
  std::string text = hugeArray(5);
  text.back() = ',';
  text += "}]";
  const auto failure = syntaxFailure(text);
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->byteOffset, text.size() - 2);
}

TEST(JSONDecoding, ReadsAWideIntegerAtTheEndOfAHugeMessage) {
  std::string text = hugeArray(6);
  text.back() = ',';
  text += "100000000000000000000]";
  const JSONValue value = JSONValue::decode(text);
  EXPECT_EQ(value.arrayValue()->back().numberValue(), 1e20);
}

TEST(JSONDecoding, CountsArraysBeyondTheParsersOwnCounter) {
  constexpr std::size_t count = 0xFFFFFF + 10;
  std::string text = "[[],{},\"\",-1,1.5,18446744073709551615";
  text.reserve(count * 2 + 64);
  for (std::size_t number = 6; number < count; ++number) text += ",1";
  text += "]";
  const JSONValue value = JSONValue::decode(text);
  EXPECT_EQ(value.arrayValue()->size(), count);
  EXPECT_EQ(value.arrayValue()->back().numberValue(), 1.0);
}

TEST(JSONDecoding, RefusesAnEmptyTextAlsoAsTheFirstOfAThread) {
  std::thread([] { EXPECT_EQ(syntaxFailure(""), (SyntaxFailure{"Unexpected end of text", 0})); }).join();
  std::thread([] { EXPECT_THROW(ormel::detail::decodePaddedJSON(ormel::detail::ByteBuffer()), DecodingError); }).join();
}

TEST(JSONDecoding, ReadsOnAfterAFailure) {
  EXPECT_TRUE(decodingFailure("{"));
  EXPECT_EQ(JSONValue::decode(R"({"a":1})").encode(), R"({"a":1})");
}

TEST(JSONDecoding, ReadsFromTheMiddleOfABuffer) {
  std::string buffer = R"({"a":"x"}{"b":"y"})";
  buffer.append(ormel::detail::jsonPadding, '}');
  const std::string_view text = buffer;
  EXPECT_EQ(ormel::detail::decodePaddedJSON(text.substr(0, 9)).encode(), R"({"a":"x"})");
  EXPECT_EQ(ormel::detail::decodePaddedJSON(text.substr(9, 9)).encode(), R"({"b":"y"})");
}

}  // namespace
