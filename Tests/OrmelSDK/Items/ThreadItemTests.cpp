#include "OrmelSDK/Items/ThreadItem.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "Support/CodingChecks.h"
#include "Support/ThreadItemSamples.h"

namespace {

using namespace ormel;
using tests::decoded;
using tests::failureOf;
using tests::ThreadItemSample;
using tests::threadItemSamples;

JSONValue withType(const JSONValue& object, std::string_view type) {
  const JSONValue word(type);
  return tests::changed(object, "type", "type", &word);
}

TEST(ThreadItem, ReadsEachTypeInBothSpellings) {
  std::size_t expectedCase = 0;
  for (const ThreadItemSample& sample : threadItemSamples) {
    const JSONValue fields = JSONValue::decode(sample.fields);
    for (const std::string_view type : {sample.camelCaseType, sample.snakeCaseType}) {
      const auto item = decode<ThreadItem>(withType(fields, type));
      EXPECT_EQ(item.value.index(), expectedCase) << type;
      EXPECT_EQ(item.id(), "i") << type;
    }
    ++expectedCase;
  }
  EXPECT_EQ(expectedCase + 1, std::variant_size_v<ThreadItem::Value>);
}

TEST(ThreadItem, CannotReadBackWhatIsWrittenWithoutAType) {
  for (const ThreadItemSample& sample : threadItemSamples) {
    const auto item = decode<ThreadItem>(withType(JSONValue::decode(sample.fields), sample.camelCaseType));
    if (sample.writtenType.empty()) {
      EXPECT_EQ(failureOf<ThreadItem>(encode(item).encode()), "No value is associated with the key 'type'.");
    } else {
      EXPECT_EQ(decode<ThreadItem>(encode(item)), item);
    }
  }
}

TEST(ThreadItem, KeepsAnItemOfAnUnknownTypeWhole) {
  const JSONValue object = JSONValue::decode(R"({"type":"future_thing","id":"x","a":1,"b":[{"c":null}]})");
  const auto item = decode<ThreadItem>(object);
  EXPECT_EQ(item, ThreadItem(UnknownThreadItem{"x", "future_thing", object}));
  EXPECT_EQ(item.id(), "x");
  EXPECT_EQ(encode(item), object);
}

TEST(UnknownThreadItem, IsReadByItself) {
  const JSONValue object = JSONValue::decode(R"({"type":"t","id":"x","a":1})");
  EXPECT_EQ(decode<UnknownThreadItem>(object), (UnknownThreadItem{"x", "t", object}));
  EXPECT_EQ(encode(UnknownThreadItem{"x", "t", object}), object);
  EXPECT_EQ(failureOf<UnknownThreadItem>(R"({"type":"t"})"), "No value is associated with the key 'id'.");
}

TEST(ThreadItem, FallsBackToTheTextOfAReasoning) {
  EXPECT_EQ(decoded<ThreadItem>(R"({"type":"reasoning","id":"r","text":"t"})"),
            ThreadItem(ReasoningItem{"r", {}, {"t"}}));
  EXPECT_EQ(decoded<ThreadItem>(R"({"type":"reasoning","id":"r","text":"t","summary":["s"]})"),
            ThreadItem(ReasoningItem{"r", {"s"}, {}}));
}

TEST(ThreadItem, HasTheTextOfAnAgentMessageOnly) {
  const ThreadItem message = AgentMessageItem{"a", "hello", {}, {}, {}, {}};
  ASSERT_TRUE(message.agentMessageText().has_value());
  EXPECT_EQ(*message.agentMessageText(), "hello");
  EXPECT_EQ(ThreadItem(AgentMessageItem()).agentMessageText(), SharedText());
  EXPECT_FALSE(ThreadItem(PlanItem{"p", "plan"}).agentMessageText().has_value());
  EXPECT_FALSE(ThreadItem(ErrorItem{"e", "m"}).agentMessageText().has_value());
}

TEST(ThreadItem, TellsTheBeginOfAReviewFromItsEnd) {
  const ThreadItem entered = EnteredReviewModeItem{{"i", "r"}};
  const ThreadItem exited = ExitedReviewModeItem{{"i", "r"}};
  EXPECT_NE(entered, exited);
  EXPECT_EQ(entered, ThreadItem(EnteredReviewModeItem{{"i", "r"}}));
  EXPECT_NE(entered, ThreadItem(EnteredReviewModeItem{{"i", "s"}}));
  const auto name = [](const ThreadItem& item) {
    return visit(
        item, [](const EnteredReviewModeItem&) { return "entered"; },
        [](const ExitedReviewModeItem&) { return "exited"; }, [](const auto&) { return "other"; });
  };
  EXPECT_STREQ(name(entered), "entered");
  EXPECT_STREQ(name(exited), "exited");
}

TEST(ThreadItem, StreamsInOneReadableLine) {
  std::ostringstream stream;
  stream << ThreadItem(PlanItem{"p", "t"}).id() << ' ' << ThreadItem(ContextCompactionItem{"c"});
  EXPECT_TRUE(stream.str() == R"(p ThreadItem {"type":"contextCompaction","id":"c"})" ||
              stream.str() == R"(p ThreadItem {"id":"c","type":"contextCompaction"})")
      << stream.str();
}

TEST(ThreadItem, SharesTheTextOfItsCopies) {
  AgentMessageItem message{"a", "hello", {}, {}, {}, {}};
  const ThreadItem before = message;
  message.text.append(" world");
  const ThreadItem after = message;
  EXPECT_EQ(*before.agentMessageText(), "hello");
  EXPECT_EQ(*after.agentMessageText(), "hello world");
}

/// Values that may take the place of any other: the reader has to refuse them or to keep them.
class RandomChanges {
 public:
  explicit RandomChanges(unsigned seed) : random_(seed) {}

  /// `value` with some of its parts left out, doubled or replaced.
  JSONValue change(const JSONValue& value, int depth = 0) {
    if (depth > 0 && oneIn(12)) return any();
    if (const auto* object = value.objectValue()) {
      std::vector<JSONMemberInit> members;
      for (const auto& [key, member] : *object) {
        if (!oneIn(10)) members.emplace_back(key, change(member, depth + 1));
      }
      return JSONValue::object(members);
    }
    if (const auto* array = value.arrayValue()) {
      std::vector<JSONValue> elements;
      for (const auto& element : *array) {
        for (std::size_t copies = random_() % 3; copies > 0; --copies) elements.push_back(change(element, depth + 1));
      }
      return JSONValue::array(elements);
    }
    if (value.stringValue() && oneIn(3)) return text();
    return value;
  }

 private:
  bool oneIn(unsigned count) { return random_() % count == 0; }

  JSONValue text() {
    static constexpr const char* texts[] = {"", "\n", "\u00e9\u4e2d", "a\tb\"\\", "In-Progress", "completed", "delete"};
    return texts[random_() % std::size(texts)];
  }

  JSONValue any() {
    switch (random_() % 6) {
      case 0:
        return nullptr;
      case 1:
        return oneIn(2);
      case 2:
        return static_cast<double>(random_() % 1000) / 2;
      case 3:
        return JSONValue::object({{"type", text()}});
      case 4:
        return JSONValue::array({text(), nullptr});
      default:
        return text();
    }
  }

  std::minstd_rand random_;
};

TEST(ThreadItem, ReadsBackWhatItWrote) {
  constexpr unsigned rounds = 400;
  std::size_t read = 0;
  for (unsigned seed = 1; seed <= rounds; ++seed) {
    RandomChanges changes(seed);
    for (const ThreadItemSample& sample : threadItemSamples) {
      const JSONValue object = withType(changes.change(JSONValue::decode(sample.fields)), sample.camelCaseType);
      std::optional<ThreadItem> item;
      try {
        item = decode<ThreadItem>(object);
      } catch (const DecodingError&) {
        continue;
      }
      ++read;
      ASSERT_EQ(decode<ThreadItem>(withType(encode(*item), sample.camelCaseType)), *item) << object;
    }
  }
  EXPECT_GT(read, rounds * std::size(threadItemSamples) / 3);
}

TEST(ThreadItem, HoldsDeepAndLargePayloads) {
  JSONValue deep;
  for (int level = 0; level < 500; ++level) deep = JSONValue::array({deep});
  const JSONValue object =
      JSONValue::object({{"type", "webSearch"}, {"id", "i"}, {"query", std::string(5'000'000, 'q')}, {"action", deep}});
  const auto item = decode<ThreadItem>(object);
  EXPECT_EQ(withType(encode(item), "webSearch"), object);

  std::vector<JSONValue> changes(100'000, JSONValue::object({{"path", "p"}, {"kind", "add"}}));
  const auto files = decode<ThreadItem>(JSONValue::object(
      {{"type", "fileChange"}, {"id", "i"}, {"status", "completed"}, {"changes", JSONValue::array(changes)}}));
  EXPECT_EQ(std::get<FileChangeItem>(files.value).changes.size(), changes.size());
}

}  // namespace
