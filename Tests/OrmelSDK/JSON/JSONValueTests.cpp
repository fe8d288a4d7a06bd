#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "OrmelSDK/Base/ByteBuffer.h"
#include "OrmelSDK/JSON/CodingErrors.h"
#include "OrmelSDK/JSON/JSONEncoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace {

using ormel::EncodingError;
using ormel::JSONMemberInit;
using ormel::JSONObjectBuilder;
using ormel::JSONValue;
using Kind = JSONValue::Kind;

JSONValue arrayOfDepth(std::size_t depth) {
  JSONValue value = JSONValue::array();
  for (std::size_t level = 1; level < depth; ++level) value = JSONValue::array({value});
  return value;
}

std::string repeated(std::string_view text, std::size_t count) {
  std::string result;
  for (; count > 0; --count) result += text;
  return result;
}

template <typename Value>
concept TemporaryHandsOutText = requires { std::declval<Value>().stringValue(); };
static_assert(TemporaryHandsOutText<const JSONValue&>);
static_assert(!TemporaryHandsOutText<JSONValue>, "the text would outlive the value");

static_assert(!std::convertible_to<void*, JSONValue>, "a pointer is no boolean");
static_assert(sizeof(JSONValue) == 16);

TEST(JSONValueAccessors, GiveThePayloadOfTheirOwnCaseOnly) {
  const JSONValue text("3");
  const JSONValue number(3);
  const JSONValue boolean(true);
  const JSONValue null;
  EXPECT_EQ(text.stringValue(), "3");
  EXPECT_EQ(text.intValue(), std::nullopt);
  EXPECT_EQ(text.boolValue(), std::nullopt);
  EXPECT_EQ(number.intValue(), 3);
  EXPECT_EQ(number.stringValue(), std::nullopt);
  EXPECT_EQ(JSONValue(1).boolValue(), std::nullopt);
  EXPECT_EQ(boolean.boolValue(), true);
  EXPECT_EQ(boolean.stringValue(), std::nullopt);
  EXPECT_EQ(boolean.intValue(), std::nullopt);
  EXPECT_FALSE(null.objectValue());
  EXPECT_FALSE(null.arrayValue());
  EXPECT_FALSE(null.stringValue());
  EXPECT_EQ(null.find("a"), nullptr);
}

TEST(JSONValueIntValue, IsEmptyForAFractionAndForNotANumber) {
  EXPECT_EQ(JSONValue(1.5).intValue(), std::nullopt);
  EXPECT_EQ(JSONValue(std::numeric_limits<double>::quiet_NaN()).intValue(), std::nullopt);
}

TEST(JSONValueIntValue, CoversTheSigned64BitRange) {
  EXPECT_EQ(JSONValue(-0x1p63).intValue(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(JSONValue(0x1.fffffffffffffp62).intValue(), 9223372036854774784);
  EXPECT_EQ(JSONValue(-0.0).intValue(), 0);
}

TEST(JSONValueIntValueDeathTest, EndsTheProcessForAWholeNumberOutsideThe64BitRange) {
  EXPECT_DEATH((void)JSONValue(1e19).intValue(), "outside the signed 64-bit range");
  EXPECT_DEATH((void)JSONValue(0x1p63).intValue(), "outside the signed 64-bit range");
  EXPECT_DEATH((void)JSONValue(-1e19).intValue(), "outside the signed 64-bit range");
  EXPECT_DEATH((void)JSONValue(std::numeric_limits<double>::infinity()).intValue(), "outside the signed 64-bit range");
  EXPECT_DEATH((void)JSONValue(-std::numeric_limits<double>::infinity()).intValue(), "outside");
}

TEST(JSONValueEncoding, WritesCompactJSON) {
  const JSONValue value = JSONValue::array(
      {1, "two", true, false, nullptr, JSONValue::object({{"a", JSONValue::array()}}), JSONValue::object(), 2.5});
  EXPECT_EQ(value.encode(), R"([1,"two",true,false,null,{"a":[]},{},2.5])");
}

TEST(JSONValueEncoding, WritesWholeNumbersWithoutAFractionOrAnExponent) {
  EXPECT_EQ(JSONValue(1.0).encode(), "1");
  EXPECT_EQ(JSONValue(100000).encode(), "100000");
  EXPECT_EQ(JSONValue(-1700000000000).encode(), "-1700000000000");
  EXPECT_EQ(JSONValue(0x1p60).encode(), "1152921504606846976");
  EXPECT_EQ(JSONValue(1e300).encode(), "1e+300");
  EXPECT_EQ(JSONValue(0.1).encode(), "0.1");
  EXPECT_EQ(JSONValue(-0.0).encode(), "-0");
  EXPECT_EQ(JSONValue(5e-324).encode(), "5e-324");
}

TEST(JSONValueEncoding, EscapesWhatMustBeEscapedAndNothingElse) {
  std::string all;
  for (char byte = 1; byte < 0x20; ++byte) all += byte;
  EXPECT_EQ(JSONValue(all).encode(),
            R"("\u0001\u0002\u0003\u0004\u0005\u0006\u0007\b\t\n\u000b\f\r\u000e\u000f\u0010\u0011\u0012\u0013\u0014)"
            R"(\u0015\u0016\u0017\u0018\u0019\u001a\u001b\u001c\u001d\u001e\u001f")");
  EXPECT_EQ(JSONValue(std::string_view("\0", 1)).encode(), R"("\u0000")");
  EXPECT_EQ(JSONValue("a/b\\c\"d \x7f \u00e9 \u2028 \U0001F600").encode(),
            "\"a/b\\\\c\\\"d \x7f \u00e9 \u2028 \U0001F600\"");
}

TEST(JSONValueEncoding, FindsAnEscapeAtEveryPlaceInAText) {
  for (std::size_t size = 1; size <= 40; ++size) {
    for (std::size_t place = 0; place < size; ++place) {
      for (const char special : {'\n', '"', '\\', '\x1f'}) {
        std::string text(size, '\xC3');
        for (std::size_t at = 0; at < size; ++at) text[at] = static_cast<char>('a' + at % 26);
        text[place] = special;
        const std::string written = JSONValue(text).encode();
        EXPECT_EQ(written.find('\n'), std::string::npos);
        EXPECT_EQ(JSONValue::decode(written), JSONValue(text));
      }
    }
  }
}

TEST(JSONValueEncoding, RefusesANumberThatIsNotFinite) {
  for (const double number : {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                              std::numeric_limits<double>::quiet_NaN()}) {
    const JSONValue value = JSONValue::object({{"a", JSONValue::array({number})}});
    try {
      (void)value.encode();
      ADD_FAILURE() << "encoded " << number;
    } catch (const EncodingError& error) {
      EXPECT_STREQ(error.what(), "A number that is not finite cannot be written as JSON");
    }
  }
}

TEST(JSONValueEncoding, GivesTheSameTextInPieces) {
  const std::string escapes(20'000, '\n');
  const JSONValue value =
      JSONValue::array({JSONValue(std::string(50'000, 'x')), JSONValue(escapes),
                        JSONValue::decode(repeated("[", 500) + repeated("]", 500)),
                        JSONValue::object({{"key " + escapes, 1.5}, {"b", JSONValue::array({true, nullptr, -3})}})});
  for (const std::size_t pieceSize : {1u, 100u, 4096u, 10'000'000u}) {
    ormel::detail::ByteBuffer piece;
    std::string whole;
    ormel::detail::encodeJSONInPieces(value, piece, pieceSize, [&](ormel::detail::ByteBuffer& filled) {
      EXPECT_LE(filled.size(), std::max<std::size_t>(pieceSize, 1) + 6 * 4096 + 8);
      whole += filled.view();
      filled.clear();
    });
    EXPECT_TRUE(whole == value.encode()) << pieceSize;
  }
}

TEST(JSONValueEncoding, GivesNoPieceAwayOfWhatCannotBeEncoded) {
  const JSONValue bad = JSONValue::object({{"a", JSONValue::array({std::numeric_limits<double>::infinity()})}});
  const JSONValue value = JSONValue::array({JSONValue(std::string(50'000, 'x')), bad});
  ormel::detail::ByteBuffer piece;
  EXPECT_THROW(ormel::detail::encodeJSONInPieces(value, piece, 100,
                                                 [](ormel::detail::ByteBuffer&) { ADD_FAILURE() << "a piece"; }),
               EncodingError);
}

TEST(JSONValueEncoding, StreamsAlsoWhatCannotBeEncoded) {
  std::ostringstream stream;
  stream << JSONValue::array({std::numeric_limits<double>::quiet_NaN(), -std::numeric_limits<double>::infinity(), "x"});
  EXPECT_EQ(stream.str(), R"([nan,-inf,"x"])");
}

TEST(JSONValueEquality, ComparesTextsByCanonicalEquivalence) {
  EXPECT_EQ(JSONValue("\u00e9"), JSONValue("e\u0301"));
  EXPECT_EQ(JSONValue("\uac00"), JSONValue("\u1100\u1161"));
  EXPECT_EQ(JSONValue("\u212a"), JSONValue("K"));
  EXPECT_NE(JSONValue("\u00e9"), JSONValue("e"));
  EXPECT_NE(JSONValue("\ufb01"), JSONValue("fi"));
}

TEST(JSONValueEquality, DecomposesTextsAsFarAsTheyGo) {
  EXPECT_EQ(JSONValue("\u1e69"), JSONValue("s\u0323\u0307"));
  EXPECT_EQ(JSONValue("\u1e9b\u0323"), JSONValue("\u017f\u0323\u0307"));
  EXPECT_EQ(JSONValue("\u0344"), JSONValue("\u0308\u0301"));
  EXPECT_EQ(JSONValue("\u1f82"), JSONValue("\u03b1\u0313\u0300\u0345"));
  EXPECT_EQ(JSONValue("\uac01"), JSONValue("\u1100\u1161\u11a8"));
  EXPECT_EQ(JSONValue("\U0002F800"), JSONValue("\u4e3d"));
}

TEST(JSONValueEquality, OrdersMarksByTheirClassAndNoFurther) {
  EXPECT_EQ(JSONValue("q\u0307\u0323"), JSONValue("q\u0323\u0307"));
  EXPECT_NE(JSONValue("q\u0300\u0301"), JSONValue("q\u0301\u0300"));
  EXPECT_EQ(JSONValue("a\u0307\u0323b\u0323\u0307"), JSONValue("a\u0323\u0307b\u0307\u0323"));
  EXPECT_NE(JSONValue("a\u0307b\u0323"), JSONValue("a\u0323b\u0307"));
}

// Sorting by exchanging neighbours would be at this for hours.
TEST(JSONValueEquality, ComparesTextsOfManyMarks) {
  constexpr std::size_t marks = 200'000;
  const std::string above = repeated("\u0307", marks);
  const std::string below = repeated("\u0323", marks);
  EXPECT_EQ(JSONValue("a" + above + below), JSONValue("a" + below + above));
  EXPECT_EQ(JSONValue("a" + repeated("\u0307\u0323", marks)), JSONValue("a" + below + above));
  const JSONValue object = JSONValue::decode("{\"" + above + below + "\":1,\"" + below + above + "\":2}");
  EXPECT_EQ(object.objectValue()->size(), 1u);
  ASSERT_NE(object.find(above + below), nullptr);
  EXPECT_EQ(*object.find(above + below), JSONValue(2));
}

TEST(JSONValueEquality, ComparesNumbersAsDoubles) {
  const double notANumber = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(JSONValue(0.0), JSONValue(-0.0));
  EXPECT_FALSE(JSONValue(notANumber) == JSONValue(notANumber));
  EXPECT_NE(JSONValue(1), JSONValue(2));
}

TEST(JSONValueEquality, NeedsTheSameCase) {
  EXPECT_NE(JSONValue(1), JSONValue("1"));
  EXPECT_NE(JSONValue(1), JSONValue(true));
  EXPECT_NE(JSONValue(0), JSONValue(nullptr));
  EXPECT_NE(JSONValue::array(), JSONValue::object());
  EXPECT_EQ(JSONValue(), JSONValue(nullptr));
}

TEST(JSONValueEquality, IgnoresTheOrderOfKeys) {
  EXPECT_EQ(JSONValue::decode(R"({"a":1,"b":[true,{"c":null}]})"),
            JSONValue::decode(R"({"b":[true,{"c":null}],"a":1})"));
  EXPECT_NE(JSONValue::decode(R"({"a":1,"b":2})"), JSONValue::decode(R"({"a":1,"c":2})"));
  EXPECT_NE(JSONValue::decode(R"({"a":1})"), JSONValue::decode(R"({"a":1,"b":2})"));
  EXPECT_NE(JSONValue::decode(R"({"a":null})"), JSONValue::decode("{}"));
}

TEST(JSONValueEquality, ComparesKeysByCanonicalEquivalence) {
  EXPECT_EQ(JSONValue::object({{"\u00e9", 1}}), JSONValue::object({{"e\u0301", 1}}));
  EXPECT_EQ(JSONValue::object({{"\u212a", 1}}), JSONValue::object({{"K", 1}}));
  std::vector<std::string> composed;
  std::vector<std::string> decomposed;
  for (int key = 0; key < 100; ++key) {
    composed.push_back("\u00e9" + std::to_string(key));
    decomposed.push_back("e\u0301" + std::to_string(key));
  }
  std::vector<JSONMemberInit> left;
  std::vector<JSONMemberInit> right;
  for (std::size_t key = 0; key < composed.size(); ++key) {
    left.emplace_back(composed[key], key);
    right.emplace_back(decomposed[decomposed.size() - 1 - key], decomposed.size() - 1 - key);
  }
  EXPECT_EQ(JSONValue::object(left), JSONValue::object(right));
}

/// An object of `count` members whose keys begin with `letter`, in ascending or descending order.
ormel::JSONObjectBuilder largeObject(std::string_view letter, int count, bool ascending) {
  ormel::JSONObjectBuilder builder;
  for (int step = 0; step < count; ++step) {
    const int number = ascending ? step : count - 1 - step;
    builder.set(std::string(letter) + std::to_string(number), number);
    builder.set("ascii" + std::to_string(number), std::to_string(number));
  }
  return builder;
}

TEST(JSONValueEquality, ComparesLargeObjectsByCanonicalEquivalenceInAnyOrder) {
  constexpr std::string_view composed = "\u00e9";
  constexpr std::string_view decomposed = "e\u0301";
  for (const int count : {15, 16, 17, 1000}) {
    const JSONValue value = largeObject(composed, count, true).build();
    EXPECT_EQ(value, largeObject(composed, count, false).build()) << count;
    EXPECT_EQ(value, largeObject(decomposed, count, false).build()) << count;
    EXPECT_EQ(value, JSONValue::decode(value.encode())) << count;
    EXPECT_NE(value, largeObject("e", count, true).build()) << count;
    const std::string last = std::string(composed) + std::to_string(count - 1);
    EXPECT_NE(value, largeObject(decomposed, count, true).set(last, 0.5).build()) << count;
    const auto withExtra = [&](std::string_view key) { return largeObject(composed, count, true).set(key, 0).build(); };
    EXPECT_NE(value, withExtra("zz")) << count;
    EXPECT_NE(withExtra("zy"), withExtra("zz")) << count;
    EXPECT_NE(withExtra("\u00ea"), withExtra("\u00eb")) << count;
    EXPECT_EQ(withExtra("\u00ea"), withExtra("e\u0302")) << count;
  }
}

TEST(JSONValueEquality, ComparesArraysInOrder) {
  EXPECT_EQ(JSONValue::array({1, 2}), JSONValue::decode("[1,2]"));
  EXPECT_NE(JSONValue::array({1, 2}), JSONValue::array({2, 1}));
  EXPECT_NE(JSONValue::array({1, 2}), JSONValue::array({1, 2, 3}));
}

TEST(JSONValueConstruction, RepairsInvalidUTF8InTextsAndKeys) {
  EXPECT_EQ(JSONValue("a\xFF").encode(), "\"a\uFFFD\"");
  EXPECT_EQ(JSONValue::object({{"k\xC3", 1}}).encode(), "{\"k\uFFFD\":1}");
}

TEST(JSONValueConstruction, LetsTheLastValueOfARepeatedKeyStand) {
  const JSONValue value = JSONValue::object({{"a", "first"}, {"b", JSONValue::array({1})}, {"a", "last"}});
  EXPECT_EQ(value.objectValue()->size(), 2u);
  EXPECT_EQ(value.find("a")->stringValue(), "last");
}

TEST(JSONValueConstruction, LetsTheLastValueOfARepeatedKeyStandInObjectsAroundTheSizeThatIsIndexed) {
  for (const std::size_t distinct : {31u, 32u, 33u, 40u}) {
    for (const std::size_t repeated : {0u, 1u, 2u, 30u}) {
      std::vector<std::string> keys;
      for (std::size_t key = 0; key < distinct + repeated; ++key) {
        keys.push_back((distinct == 40 ? "\u00e9" : "key") + std::to_string(key % distinct));
      }
      std::vector<JSONMemberInit> members;
      for (const auto& key : keys) members.emplace_back(key, "text " + std::to_string(members.size()));
      const JSONValue value = JSONValue::object(members);
      members.clear();
      EXPECT_EQ(value.objectValue()->size(), distinct);
      for (std::size_t key = 0; key < distinct; ++key) {
        const std::size_t last = key < repeated ? key + distinct : key;
        ASSERT_NE(value.find(keys[key]), nullptr);
        EXPECT_EQ(value.find(keys[key])->stringValue(), "text " + std::to_string(last));
      }
      EXPECT_EQ(value.find("absent"), nullptr);
      EXPECT_EQ(value.detached(), value);
      EXPECT_EQ(JSONValue::decode(value.encode()), value);
    }
  }
}

TEST(JSONValueConstruction, BoundsTheDepth) {
  const JSONValue deepest = arrayOfDepth(JSONValue::maximumDepth);
  EXPECT_EQ(deepest.encode().size(), 2 * JSONValue::maximumDepth);
  try {
    (void)JSONValue::array({deepest});
    ADD_FAILURE() << "built a value beyond the limit";
  } catch (const EncodingError& error) {
    EXPECT_STREQ(error.what(), "JSON is nested deeper than 1024 levels");
  }
  EXPECT_THROW(JSONValue::object({{"a", deepest}}), EncodingError);
}

TEST(JSONValueConstruction, FitsTheDeepestDecodedValueIntoAnEnvelope) {
  const std::string text = std::string(512, '[') + std::string(512, ']');
  const JSONValue envelope = JSONValue::object({{"message", JSONValue::decode(text)}});
  EXPECT_EQ(envelope.encode(), "{\"message\":" + text + "}");
}

TEST(JSONValueConstruction, CountsTheDepthOfDecodedParts) {
  JSONValue value = JSONValue::decode(std::string(512, '[') + std::string(512, ']'));
  for (int level = 0; level < 512; ++level) value = JSONValue::object({{"a", value}});
  EXPECT_THROW(JSONValue::array({value}), EncodingError);
}

TEST(JSONValueConstruction, CountsTheDepthOnlyOfMembersThatStay) {
  const JSONValue deepest = arrayOfDepth(JSONValue::maximumDepth);
  EXPECT_EQ(JSONValue::object({{"a", deepest}, {"b", 1}, {"a", 2}}), JSONValue::object({{"a", 2}, {"b", 1}}));
  const std::string deep = std::string(500, '[') + std::string(500, ']');
  for (const JSONValue& shallow : {JSONValue::decode("{\"a\":" + deep + ",\"a\":[]}"),
                                   JSONValue::object({{"a", JSONValue::decode(deep)}, {"a", JSONValue::array()}})}) {
    JSONValue value = shallow;
    for (std::size_t level = 2; level < JSONValue::maximumDepth; ++level) value = JSONValue::array({value});
    EXPECT_THROW(JSONValue::array({value}), EncodingError);
  }
}

TEST(JSONObjectBuilder, KeepsOptionalMembersOut) {
  JSONObjectBuilder builder;
  EXPECT_TRUE(builder.empty());
  builder.set("a", 1).set("b", std::optional<std::string>()).set("c", std::optional<int>(2)).set("d", nullptr);
  EXPECT_EQ(builder.build(), JSONValue::decode(R"({"a":1,"c":2,"d":null})"));
  builder.set("a", 3);
  EXPECT_EQ(builder.build(), JSONValue::decode(R"({"a":3,"c":2,"d":null})"));
}

TEST(JSONValueLifetime, KeepsAMessageAliveThroughAnyPartOfIt) {
  JSONValue part;
  {
    const JSONValue message = JSONValue::decode(R"({"outer":{"inner":["kept text",{"k":"v"}]}})");
    part = *message.find("outer")->find("inner");
  }
  EXPECT_EQ(part.encode(), R"(["kept text",{"k":"v"}])");
  JSONValue text = part.arrayValue()->front();
  part = nullptr;
  EXPECT_EQ(text.stringValue(), "kept text");
}

TEST(JSONValueLifetime, SurvivesAssignmentFromAPartOfItself) {
  JSONValue value = JSONValue::decode(R"([["inside"]])");
  value = value.arrayValue()->front();
  value = value.arrayValue()->front();
  EXPECT_EQ(value.stringValue(), "inside");
  JSONValue built = JSONValue::array({JSONValue::array({JSONValue("deep")})});
  built = built.arrayValue()->front();
  EXPECT_EQ(built.encode(), R"(["deep"])");
}

TEST(JSONValueLifetime, LeavesNullBehindAMove) {
  JSONValue source("text");
  const JSONValue target = std::move(source);
  EXPECT_TRUE(source.isNull());  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(target.stringValue(), "text");
}

TEST(JSONValueLifetime, DetachesAnEqualCopyOfItsOwn) {
  std::string text = R"({"keep":{"a":["x",1,null,{"é":true}],"b":{}},"large":[)";
  for (int key = 0; key < 100; ++key) text += "{\"k\":\"" + std::string(100, 'y') + "\"},";
  text += "0]}";
  std::string manyKeys = "{";
  for (int key = 0; key < 50; ++key) manyKeys += "\"key" + std::to_string(key) + "\":" + std::to_string(key) + ",";
  manyKeys += "\"\u00e9\":0,\"key3\":\"again\"}";
  for (const std::string& source : {text, manyKeys, std::string("\"t\""), std::string("3"), std::string("[]")}) {
    const JSONValue value = JSONValue::decode(source);
    const JSONValue detached = value.detached();
    EXPECT_EQ(detached, value);
    EXPECT_EQ(detached.encode(), value.encode());
    EXPECT_EQ(detached.find("key49") != nullptr, value.find("key49") != nullptr);
  }
  const JSONValue built = JSONValue::object({{"a", JSONValue::array({"x", JSONValue::decode("[1]")})}});
  EXPECT_EQ(built.detached(), built);
}

TEST(JSONValueConcurrency, IsReadCopiedAndDroppedFromManyThreads) {
  JSONValue value = JSONValue::decode(R"({"list":[{"text":"shared"},{"text":"shared"}]})");
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([value] {
      for (int round = 0; round < 1000; ++round) {
        const JSONValue list = *value.find("list");
        for (const JSONValue& element : *list.arrayValue()) {
          const JSONValue copy = element;
          EXPECT_EQ(copy.find("text")->stringValue(), "shared");
        }
      }
    });
  }
  value = nullptr;
  for (auto& thread : threads) thread.join();
}

TEST(JSONContainers, IterateOverTheirContents) {
  const JSONValue value = JSONValue::decode(R"({"a":1,"b":2,"list":[3,4]})");
  double sum = 0;
  for (const auto& [key, member] : *value.objectValue()) sum += member.numberValue().value_or(0);
  for (const JSONValue& element : *value.find("list")->arrayValue()) sum += *element.numberValue();
  EXPECT_EQ(sum, 10);
  EXPECT_EQ((*value.find("list")->arrayValue())[1].numberValue(), 4.0);
  EXPECT_TRUE(value.objectValue()->contains("a"));
  EXPECT_FALSE(value.objectValue()->contains("A"));
}

TEST(JSONContainers, ReadAnObjectLikeAnyOrderedOrUnorderedMap) {
  // Keys of every length around the word sizes that the storage works in.
  std::string text = "{";
  for (std::size_t length = 0; length <= 30; ++length) {
    text.append(1, '"').append(length, 'k').append("\":").append(std::to_string(length)).append(1, ',');
  }
  text.back() = '}';
  const JSONValue value = JSONValue::decode(text);
  EXPECT_EQ(value.objectValue()->size(), 31u);
  for (std::size_t length = 0; length <= 30; ++length) {
    ASSERT_NE(value.find(std::string(length, 'k')), nullptr) << length;
    EXPECT_EQ(value.find(std::string(length, 'k'))->numberValue(), static_cast<double>(length));
  }
}

}  // namespace
