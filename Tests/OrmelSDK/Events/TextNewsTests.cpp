#include "OrmelSDK/Events/TextNews.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "OrmelSDK/Events/UserQuestions.h"

namespace ormel {
namespace {

ThreadItem message(std::string id, SharedText text) {
  AgentMessageItem item;
  item.id = std::move(id);
  item.text = std::move(text);
  return item;
}

ThreadItem command(SharedText output) {
  CommandExecutionItem item;
  item.id = "m";
  item.aggregatedOutput = std::move(output);
  return item;
}

ThreadEvent started(ThreadItem item) {
  ItemStartedEvent event;
  event.item = std::move(item);
  return event;
}
ThreadEvent updated(ThreadItem item) {
  ItemUpdatedEvent event;
  event.item = std::move(item);
  return event;
}
ThreadEvent completed(ThreadItem item) {
  ItemCompletedEvent event;
  event.item = std::move(item);
  return event;
}

NewText news(std::string_view text, bool replaces = false, bool isComplete = false) {
  NewText expected;
  expected.text = text;
  expected.replaces = replaces;
  expected.isComplete = isComplete;
  return expected;
}

TEST(TextNews, GivesEachPieceOnce) {
  TextNews told;
  SharedText text("Hel");
  const ThreadEvent first = started(message("m", text));
  EXPECT_EQ(told.ofMessage(first), news("Hel"));
  EXPECT_EQ(told.ofMessage(first), news(""));
  text.append("lo");
  const ThreadEvent grown = updated(message("m", text));
  EXPECT_EQ(told.ofMessage(grown), news("lo"));
  const ThreadEvent other = updated(message("n", "other"));
  EXPECT_EQ(told.ofMessage(other), news("other"));
  // The final text comes in a message of its own, and so in a buffer of its own.
  const ThreadEvent last = completed(message("m", "Hello!"));
  EXPECT_EQ(told.ofMessage(last), news("!", false, true));
  const ThreadEvent again = updated(message("m", "anew"));
  EXPECT_EQ(told.ofMessage(again), news("anew"));
}

TEST(TextNews, SaysThatATextWasReplaced) {
  TextNews told;
  const ThreadEvent first = updated(message("m", "Hello"));
  told.ofMessage(first);
  for (const char* text : {"Hallo", "Hell", "something else"}) {
    TextNews copy = told;
    const ThreadEvent last = completed(message("m", text));
    EXPECT_EQ(copy.ofMessage(last), news(text, true, true));
  }
}

TEST(TextNews, KeepsMessagesAndCommandsApart) {
  TextNews told;
  const ThreadEvent output = updated(command("out"));
  EXPECT_EQ(told.ofMessage(output), news(""));
  EXPECT_EQ(told.ofCommandOutput(output), news("out"));
  const ThreadEvent text = updated(message("c", "text"));
  EXPECT_EQ(told.ofCommandOutput(text), news(""));
  const ThreadEvent ended = TurnCompletedEvent();
  EXPECT_EQ(told.ofMessage(ended), news(""));
}

TEST(UserQuestions, AreReadFromTheItemThatAsks) {
  McpToolCallItem call;
  call.id = "q1";
  call.server = "ormel";
  call.tool = "request_user_input";
  call.arguments = JSONValue::decode(R"({"isBlocking":false,"autoResolutionMs":0,"questions":[
      {"id":"size","question":"How large?","prompt":"How large?","header":"Size","isSecret":true,"isOther":true,
       "options":[{"label":"Small","title":"Small","description":"cheap","isOther":false},
                  {"label":"Other","title":"Other","isOther":true,"requiresCustomInput":true}]},
      {"id":"name","question":"Which name?","header":"","isSecret":false,"options":[]}]})");
  const auto asked = UserQuestions::askedBy(started(call));
  ASSERT_TRUE(asked);
  EXPECT_EQ(asked->itemID, "q1");
  EXPECT_FALSE(asked->isBlocking);
  EXPECT_EQ(asked->autoResolutionMilliseconds, 0);
  ASSERT_EQ(asked->questions.size(), 2U);
  const UserQuestion& size = asked->questions[0];
  EXPECT_EQ(size.id, "size");
  EXPECT_EQ(size.question, "How large?");
  EXPECT_EQ(size.header, "Size");
  EXPECT_TRUE(size.isSecret);
  ASSERT_EQ(size.options.size(), 2U);
  EXPECT_EQ(size.options[0].label, "Small");
  EXPECT_EQ(size.options[0].description, "cheap");
  EXPECT_FALSE(size.options[0].isOther);
  EXPECT_EQ(size.options[1].description, std::nullopt);
  EXPECT_TRUE(size.options[1].isOther);
  EXPECT_EQ(asked->questions[1].question, "Which name?");
  EXPECT_TRUE(asked->questions[1].options.empty());
  EXPECT_FALSE(asked->questions[1].isSecret);

  EXPECT_EQ(UserQuestions::askedBy(completed(call)), std::nullopt);
  EXPECT_EQ(UserQuestions::of(call), asked);
  McpToolCallItem foreign = call;
  foreign.server = "another";
  EXPECT_EQ(UserQuestions::of(foreign), std::nullopt);
  foreign = call;
  foreign.tool = "another";
  EXPECT_EQ(UserQuestions::of(foreign), std::nullopt);
  EXPECT_EQ(UserQuestions::of(message("m", "x")), std::nullopt);
}

TEST(UserQuestions, TakeWhatIsMissingAsEmpty) {
  McpToolCallItem call;
  call.server = "ormel";
  call.tool = "request_user_input";
  for (const char* arguments : {"null", "[]", "{}", R"({"questions":{}})"}) {
    call.arguments = JSONValue::decode(arguments);
    const auto asked = UserQuestions::of(call);
    ASSERT_TRUE(asked);
    EXPECT_TRUE(asked->questions.empty());
    EXPECT_TRUE(asked->isBlocking);
    EXPECT_EQ(asked->autoResolutionMilliseconds, std::nullopt);
  }
  call.arguments = JSONValue::decode(R"({"questions":[7,{"options":[1]}],"autoResolutionMs":1e300})");
  const auto asked = UserQuestions::of(call);
  ASSERT_EQ(asked->questions.size(), 2U);
  EXPECT_EQ(asked->questions[0], UserQuestion());
  EXPECT_EQ(asked->questions[1].options.size(), 1U);
  EXPECT_EQ(asked->autoResolutionMilliseconds, std::nullopt);
}

}  // namespace
}  // namespace ormel
