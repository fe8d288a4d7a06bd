#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdio.h>

#include <functional>
#include <map>
#include <random>
#include <sstream>

#include "ormel-chat/ChatProgram.h"
#include "ormel-chat/Inbox.h"
#include "ormel-chat/JSONLines.h"

namespace ormel::chat {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

std::vector<std::string> jsonLinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// The text written to a file.
std::vector<std::string> written(const std::function<void(JSONLines&)>& write,
                                 JSONUpdates updates = JSONUpdates::deltas) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(::tmpfile(), ::fclose);
  Console console(::fileno(file.get()));
  JSONLines lines(console, updates);
  write(lines);
  console.flush();
  ::rewind(file.get());
  std::string text;
  char block[4096];
  for (std::size_t count = 0; (count = ::fread(block, 1, sizeof block, file.get())) > 0;) text.append(block, count);
  return jsonLinesOf(text);
}

std::vector<JSONValue> decoded(const std::vector<std::string>& lines) {
  std::vector<JSONValue> values;
  for (const auto& line : lines) values.push_back(JSONValue::decode(line));
  return values;
}

std::string textMember(const JSONValue& object, std::string_view key) {
  const JSONValue* value = object.find(key);
  return std::string(value && value->stringValue() ? *value->stringValue() : "");
}

/// A program that puts the texts of items together from what is new of them.
class Reader {
 public:
  void read(const std::string& line) {
    const JSONValue event = JSONValue::decode(line);
    types.push_back(textMember(event, "type"));
    if (types.back() != "item.delta") return;
    const JSONValue* index = event.find("index");
    std::string key = textMember(event, "item_id") + " " + textMember(event, "member");
    if (index) key += " " + std::to_string(static_cast<int>(index->numberValue().value()));
    if (event.find("replaces")) texts[key].clear();
    texts[key] += textMember(event, "delta");
    bytes[textMember(event, "member")] += textMember(event, "delta").size();
  }

  std::vector<std::string> types;
  std::map<std::string, std::string> texts;
  /// How much was said of each member, also of what was replaced later.
  std::map<std::string, std::size_t> bytes;
};

AgentMessageItem message(const SharedText& text) {
  AgentMessageItem item;
  item.id = "m";
  item.text = text;
  return item;
}

CommandExecutionItem command(const SharedText& output) {
  CommandExecutionItem item;
  item.id = "c";
  item.command = "make";
  item.status = CommandExecutionStatus::inProgress;
  item.aggregatedOutput = output;
  return item;
}

TEST(ChatJSONLines, GiveWhatIsNewOfATextOnce) {
  SharedText text("on");
  const auto lines = written([&](JSONLines& json) {
    json.write(ItemStartedEvent{message({}), {}, {}, {}});
    json.write(ItemUpdatedEvent{message(text)});
    text.append("e");
    json.write(ItemUpdatedEvent{message(text)});
    json.write(ItemUpdatedEvent{message(text)});
    text.append(" two");
    json.write(ItemCompletedEvent{message(text), {}, {}, {}});
  });
  EXPECT_THAT(
      decoded(lines),
      ElementsAre(
          JSONValue::decode(R"({"item":{"id":"m","text":"","type":"agent_message"},"type":"item.started"})"),
          JSONValue::decode(R"({"delta":"on","item_id":"m","member":"text","type":"item.delta"})"),
          JSONValue::decode(R"({"delta":"e","item_id":"m","member":"text","type":"item.delta"})"),
          JSONValue::decode(R"({"delta":" two","item_id":"m","member":"text","type":"item.delta"})"),
          JSONValue::decode(R"({"item":{"id":"m","text":"one two","type":"agent_message"},"type":"item.completed"})")));
}

TEST(ChatJSONLines, GiveEveryStateWholeOnRequest) {
  const auto lines = written(
      [&](JSONLines& json) {
        json.write(ItemUpdatedEvent{message("on")});
        json.write(ItemUpdatedEvent{message("one")});
        json.write(ItemUpdatedEvent{message("one")});
      },
      JSONUpdates::full);
  EXPECT_THAT(
      decoded(lines),
      ElementsAre(
          JSONValue::decode(R"({"item":{"id":"m","text":"on","type":"agent_message"},"type":"item.updated"})"),
          JSONValue::decode(R"({"item":{"id":"m","text":"one","type":"agent_message"},"type":"item.updated"})"),
          JSONValue::decode(R"({"item":{"id":"m","text":"one","type":"agent_message"},"type":"item.updated"})")));
}

TEST(ChatJSONLines, TellWhatElseChangesOfAnItem) {
  CommandExecutionItem item = command("out");
  const auto lines = written([&](JSONLines& json) {
    json.write(ItemStartedEvent{item, {}, {}, {}});
    item.processID = "7";
    json.write(ItemUpdatedEvent{item});
    json.write(ItemUpdatedEvent{item});
  });
  ASSERT_THAT(lines, SizeIs(3));
  EXPECT_THAT(lines[0], AllOf(HasSubstr("item.started"), HasSubstr(R"("aggregated_output":"")")));
  EXPECT_EQ(JSONValue::decode(lines[1]),
            JSONValue::decode(R"({"delta":"out","item_id":"c","member":"aggregated_output","type":"item.delta"})"));
  EXPECT_THAT(lines[2], AllOf(HasSubstr("item.updated"), HasSubstr(R"("process_id":"7")"), Not(HasSubstr("out\""))));
}

TEST(ChatJSONLines, ReplaceATextThatSaysSomethingElseInTheEnd) {
  Reader reader;
  for (const char* end : {"uno", ""}) {
    const auto lines = written([&](JSONLines& json) {
      json.write(ItemUpdatedEvent{message("one")});
      json.write(ItemCompletedEvent{message(end), {}, {}, {}});
    });
    for (const auto& line : lines) reader.read(line);
    EXPECT_EQ(reader.texts["m text"], end);
    EXPECT_THAT(lines, Contains(HasSubstr(R"("replaces":true)")));
  }
}

TEST(ChatJSONLines, GiveAnItemThatWasNotAnnounced) {
  Reader reader;
  for (const auto& line :
       written([](JSONLines& json) { json.write(ItemCompletedEvent{message("all at once"), {}, {}, {}}); })) {
    reader.read(line);
  }
  EXPECT_EQ(reader.texts["m text"], "all at once");
  EXPECT_THAT(reader.types, ElementsAre("item.delta", "item.completed"));
}

TEST(ChatJSONLines, DoNotRepeatALongText) {
  std::string output;
  while (output.size() < 200'000) output += "caf\xc3\xa9 ";
  Reader reader;
  const auto lines =
      written([&](JSONLines& json) { json.write(ItemCompletedEvent{command(SharedText(output)), {}, {}, {}}); });
  for (const auto& line : lines) {
    reader.read(line);
    EXPECT_LT(line.size(), 70'000u);
  }
  EXPECT_EQ(reader.texts["c aggregated_output"], output);
  const JSONValue last = JSONValue::decode(lines.back());
  EXPECT_EQ(*last.find("omitted_bytes"),
            JSONValue::decode("{\"aggregated_output\":" + std::to_string(output.size()) + "}"));
  EXPECT_EQ(textMember(*last.find("item"), "aggregated_output"), "");
}

TEST(ChatJSONLines, ForgetItemsOfAnOperationThatIsOver) {
  const auto lines = written([&](JSONLines& json) {
    json.write(ItemUpdatedEvent{message("one")});
    json.endOperation();
    json.write(ItemUpdatedEvent{message("two")});
  });
  EXPECT_THAT(lines, SizeIs(4));
}

TEST(ChatJSONLines, SayAsMuchAsTheItems) {
  std::mt19937 random(18);
  for (int round = 0; round < 50; ++round) {
    std::vector<SharedText> summary;
    std::vector<SharedText> content;
    const auto item = [&] {
      ReasoningItem reasoning;
      reasoning.id = "r";
      reasoning.summary = summary;
      reasoning.content = content;
      return reasoning;
    };
    Reader reader;
    const auto lines = written([&](JSONLines& json) {
      json.write(ItemStartedEvent{item(), {}, {}, {}});
      for (auto steps = random() % 20; steps > 0; --steps) {
        auto& list = random() % 2 == 0 ? summary : content;
        if (list.empty() || random() % 4 == 0) list.emplace_back();
        list[random() % list.size()].append(std::string(random() % 50'000, 'x') + "\xe6\xbc\xa2");
        json.write(ItemUpdatedEvent{item()});
      }
      if (!summary.empty() && random() % 3 == 0) summary.front() = "another";
      json.write(ItemCompletedEvent{item(), {}, {}, {}});
    });
    for (const auto& line : lines) reader.read(line);
    for (std::size_t index = 0; index < summary.size(); ++index) {
      EXPECT_EQ(reader.texts["r summary " + std::to_string(index)], summary[index]);
    }
    for (std::size_t index = 0; index < content.size(); ++index) {
      EXPECT_EQ(reader.texts["r content " + std::to_string(index)], content[index]);
    }
  }
}

TEST(ChatJSON, TakesAsMuchAsTheOutputOfACommand) {
  std::size_t bytes[2] = {0, 0};
  const int megabytes[2] = {1, 4};
  for (int run = 0; run < 2; ++run) {
    const ChatEnd end = chat({"--json", "big " + std::to_string(megabytes[run])});
    EXPECT_EQ(end.status, 0);
    Reader reader;
    for (const auto& line : jsonLinesOf(end.output)) {
      reader.read(line);
      EXPECT_LT(line.size(), 140'000u);
    }
    // In the end the simulator says something short instead.
    const std::size_t output = static_cast<std::size_t>(megabytes[run]) << 20;
    EXPECT_GE(reader.bytes["aggregated_output"], output);
    EXPECT_LT(reader.bytes["aggregated_output"], output + 100);
    bytes[run] = end.output.size();
  }
  EXPECT_LT(bytes[0], std::size_t{3} << 19);
  EXPECT_LT(bytes[1], 4 * bytes[0] + bytes[0] / 4);
}

TEST(ChatJSON, SaysTheSameByDeltasAsByWholeTexts) {
  const ChatEnd whole = chat({"--json", "--json-updates", "full", "hello"});
  const ChatEnd deltas = chat({"--json", "--json-updates", "deltas", "hello"});
  EXPECT_EQ(whole.status, 0);
  EXPECT_EQ(deltas.status, 0);
  std::map<std::string, std::vector<std::string>> messages;
  for (const ChatEnd* end : {&whole, &deltas}) {
    Reader reader;
    for (const auto& line : jsonLinesOf(end->output)) {
      reader.read(line);
      const JSONValue event = JSONValue::decode(line);
      const JSONValue* item = event.find("item");
      if (textMember(event, "type") != "item.completed" || textMember(*item, "type") != "agent_message") continue;
      messages[end == &whole ? "whole" : "deltas"].push_back(textMember(*item, "text"));
      if (end == &deltas) {
        EXPECT_EQ(reader.texts[textMember(*item, "id") + " text"], textMember(*item, "text"));
      }
    }
    if (end == &whole) {
      EXPECT_THAT(reader.types, Not(Contains("item.delta")));
    } else {
      EXPECT_THAT(reader.types, Contains("item.delta"));
    }
  }
  EXPECT_THAT(messages["whole"], Not(IsEmpty()));
  EXPECT_EQ(messages["whole"], messages["deltas"]);
}

TEST(ChatJSON, RefusesOtherFormsOfUpdates) {
  EXPECT_EQ(chat({"--json", "--json-updates", "some", "hello"}).status, 1);
  EXPECT_EQ(chat({"--json-updates", "full", "hello"}).status, 1);
}

TEST(ChatInbox, KeepsTheLastStateOfWhatGrows) {
  const auto states = [](const std::vector<Message>& messages) {
    std::vector<std::string> texts;
    for (const Message& message : messages) {
      const auto* event = std::get_if<ThreadEvent>(&message);
      const auto* update = event ? std::get_if<ItemUpdatedEvent>(&event->value) : nullptr;
      if (!update) {
        texts.emplace_back("-");
      } else if (const auto* output = std::get_if<CommandExecutionItem>(&update->item.value)) {
        texts.push_back("c " + output->aggregatedOutput.string());
      } else {
        texts.push_back("m " + update->item.agentMessageText().value_or("").string());
      }
    }
    return texts;
  };
  const auto postAll = [](Inbox& inbox) {
    inbox.post(ThreadEvent(ItemUpdatedEvent{message("1")}));
    inbox.post(ThreadEvent(ItemUpdatedEvent{command("1")}));
    inbox.post(ThreadEvent(ItemUpdatedEvent{message("12")}));
    inbox.post(ThreadEvent(ItemUpdatedEvent{command("12")}));
    inbox.post(OperationAccepted());
    inbox.post(ThreadEvent(ItemUpdatedEvent{message("123")}));
  };
  Inbox inbox;
  postAll(inbox);
  EXPECT_THAT(states(inbox.take()), ElementsAre("m 12", "c 12", "-", "m 123"));
  postAll(inbox);
  EXPECT_THAT(states(inbox.take()), SizeIs(4));
  Inbox keeping(true);
  postAll(keeping);
  EXPECT_THAT(states(keeping.take()), ElementsAre("m 1", "c 1", "m 12", "c 12", "-", "m 123"));
}

}  // namespace
}  // namespace ormel::chat
