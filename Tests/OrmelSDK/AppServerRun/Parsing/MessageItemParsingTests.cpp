#include "OrmelSDK/AppServerRun/Parsing/MessageItemParsing.h"

#include <gtest/gtest.h>

#include "OrmelSDK/AppServerRun/Parsing/PlanningItemParsing.h"
#include "Support/ParsedItems.h"

namespace {

using namespace ormel;
using tests::parsedAs;

std::optional<MemoryCitation> citation(std::string_view text) {
  return detail::memoryCitation(JSONValue::decode(text));
}

TEST(ParseHookPrompt, SkipsFragmentsThatLackAText) {
  const auto item = parsedAs<HookPromptItem>(R"({"type":"hookPrompt","id":"h","fragments":[
      {"text":"a","hookRunId":"1","hook_run_id":"x"},{"text":"b","hook_run_id":"2"},{"text":"c","hookRunId":3,
      "hook_run_id":"3"},{"text":"d"},{"hookRunId":"4"},{"text":5,"hookRunId":"5"},"e",null]})");
  EXPECT_EQ(item, (HookPromptItem{"h", {{"a", "1"}, {"b", "2"}, {"c", "3"}}}));
  EXPECT_EQ(parsedAs<HookPromptItem>(R"({"type":"hookPrompt","id":"h","fragments":{}})"), (HookPromptItem{"h", {}}));
}

TEST(ParseAgentMessage, ReadsEveryField) {
  const auto item = parsedAs<AgentMessageItem>(R"({"type":"agentMessage","id":"a","text":"t","phase":"Final-Answer",
      "memoryCitation":{"entries":[],"rolloutIds":["r"]},"delivery":"d",
      "questions":[{"title":"q","options":["o",1,"p"]},{"title":"r"},{"options":[]},"s",{"title":2},
                   {"title":"u","options":7}]})");
  AgentMessageItem expected;
  expected.id = "a";
  expected.text = "t";
  expected.phase = AgentMessagePhase::finalAnswer;
  expected.memoryCitation = MemoryCitation{{}, {"r"}};
  expected.delivery = "d";
  expected.questions = {{"q", {{"o", "p"}}}, {"r", {}}, {"u", {}}};
  EXPECT_EQ(item, expected);
}

TEST(ParseAgentMessage, TakesDefaultsForWhatIsMissingOrMalformed) {
  AgentMessageItem expected;
  expected.id = "a";
  EXPECT_EQ(parsedAs<AgentMessageItem>(R"({"type":"agentMessage","id":"a"})"), expected);
  EXPECT_EQ(parsedAs<AgentMessageItem>(R"({"type":"agentMessage","id":"a","text":1,"phase":2,"memoryCitation":"x",
      "delivery":{},"questions":{}})"),
            expected);
}

TEST(ParseAgentMessage, KeepsAnEmptyListOfQuestions) {
  const auto item = parsedAs<AgentMessageItem>(R"({"type":"agentMessage","id":"a","questions":[]})");
  ASSERT_TRUE(item.questions);
  EXPECT_TRUE(item.questions->empty());
}

TEST(ParseAgentMessage, ReadsTheOtherSpellingOfACitationWhenTheFirstIsNone) {
  const auto item = parsedAs<AgentMessageItem>(
      R"({"type":"agentMessage","id":"a","memoryCitation":null,"memory_citation":{"rollout_ids":["s"]}})");
  EXPECT_EQ(item.memoryCitation, (MemoryCitation{{}, {"s"}}));
  const auto both = parsedAs<AgentMessageItem>(
      R"({"type":"agentMessage","id":"a","memoryCitation":{},"memory_citation":{"rollout_ids":["s"]}})");
  EXPECT_EQ(both.memoryCitation, MemoryCitation());
}

TEST(MemoryCitation, IsAbsentForWhatIsNoObject) {
  for (const char* text : {"null", "[]", "\"x\"", "1"}) EXPECT_EQ(citation(text), std::nullopt) << text;
  EXPECT_EQ(citation("{}"), MemoryCitation());
}

TEST(MemoryCitation, SkipsEntriesThatLackAPart) {
  EXPECT_EQ(citation(R"({"entries":[
      {"path":"p","lineStart":1,"line_start":9,"lineEnd":2,"line_end":9,"note":"n"},
      {"path":"q","line_start":3.0,"line_end":4,"note":""},
      {"path":"r","lineStart":1.5,"lineEnd":2,"note":"n"},{"path":"r","lineStart":1,"lineEnd":"2","note":"n"},
      {"lineStart":1,"lineEnd":2,"note":"n"},{"path":"r","lineEnd":2,"note":"n"},{"path":"r","lineStart":1,"note":"n"},
      {"path":"r","lineStart":1,"lineEnd":2},5],"rolloutIds":["a",1,"b",null]})"),
            (MemoryCitation{{{"p", 1, 2, "n"}, {"q", 3, 4, ""}}, {"a", "b"}}));
}

TEST(MemoryCitation, ReadsTheOtherSpellingOfItsRecordingsWhenTheFirstIsNoList) {
  EXPECT_EQ(citation(R"({"rolloutIds":"x","rollout_ids":["a"]})"), (MemoryCitation{{}, {"a"}}));
  EXPECT_EQ(citation(R"({"rolloutIds":[],"rollout_ids":["a"]})"), MemoryCitation());
  EXPECT_EQ(citation(R"({"entries":{},"rolloutIds":["a"]})"), (MemoryCitation{{}, {"a"}}));
}

TEST(ParsePlan, ReadsItsText) {
  EXPECT_EQ(parsedAs<PlanItem>(R"({"type":"plan","id":"p","text":"t"})"), (PlanItem{"p", "t"}));
  EXPECT_EQ(parsedAs<PlanItem>(R"({"type":"plan","id":"p","text":["t"]})"), (PlanItem{"p", ""}));
}

TEST(ParseReasoning, KeepsTheTextsOfItsLists) {
  EXPECT_EQ(parsedAs<ReasoningItem>(R"({"type":"reasoning","id":"r","summary":["s",1,"t"],"content":[null,"c"],
      "text":"x"})"),
            (ReasoningItem{"r", {"s", "t"}, {"c"}}));
  EXPECT_EQ(parsedAs<ReasoningItem>(R"({"type":"reasoning","id":"r","summary":["s"],"text":"x"})"),
            (ReasoningItem{"r", {"s"}, {}}));
  EXPECT_EQ(parsedAs<ReasoningItem>(R"({"type":"reasoning","id":"r","content":[""],"text":"x"})"),
            (ReasoningItem{"r", {}, {""}}));
}

TEST(ParseReasoning, TakesItsTextWhenBothListsHaveNone) {
  for (const char* lists : {"", R"("summary":[],)", R"("summary":[1],"content":[{}],)", R"("summary":"s",)"}) {
    const std::string head = std::string(R"({"type":"reasoning","id":"r",)") + lists;
    EXPECT_EQ(parsedAs<ReasoningItem>(head + R"("text":"t"})"), (ReasoningItem{"r", {}, {"t"}}));
    EXPECT_EQ(parsedAs<ReasoningItem>(head + R"("text":""})"), (ReasoningItem{"r", {}, {}}));
    EXPECT_EQ(parsedAs<ReasoningItem>(head + R"("text":5})"), (ReasoningItem{"r", {}, {}}));
  }
}

TEST(ParseTodoList, TrimsTextsAndSkipsThoseWithNone) {
  const auto item = parsedAs<TodoListItem>(R"({"type":"todoList","id":"t","items":[
      {"step":"  a ","status":"Completed"},{"text":"  "},{"text":"b\n","step":"x"},{"text":5,"step":"c"},
      {"text":" ","step":"x"},{"completed":true},"d",null]})");
  EXPECT_EQ(item, (TodoListItem{"t", {{"a", true}, {"b", false}, {"c", false}}}));
  EXPECT_EQ(parsedAs<TodoListItem>(R"({"type":"todoList","id":"t","items":7})"), (TodoListItem{"t", {}}));
}

TEST(ParseTodoList, BelievesTheFlagBeforeTheStatus) {
  const auto item = parsedAs<TodoListItem>(R"({"type":"todoList","id":"t","items":[
      {"text":"a","completed":true,"status":"pending"},{"text":"b","completed":false,"status":"completed"},
      {"text":"c","completed":1,"status":" COM_PLETED_ "},{"text":"d","status":"com-pleted"},
      {"text":"e","status":"done"},{"text":"f","completed":null,"status":true}]})");
  EXPECT_EQ(item,
            (TodoListItem{"t", {{"a", true}, {"b", false}, {"c", true}, {"d", false}, {"e", false}, {"f", false}}}));
}

TEST(TodoListItemOfAPlan, IsNamedAfterItsTurnAndPrefersSteps) {
  const JSONValue plan = JSONValue::decode(R"([{"step":" a ","text":"x","status":"completed"},{"text":"b"},
      {"step":"c","completed":true},{"step":" ","text":"x"},{"step":"d","status":"in_progress"},4])");
  EXPECT_EQ(detail::todoListItem(plan.arrayValue(), "t1"),
            (TodoListItem{"turn-plan:t1", {{"a", true}, {"b", false}, {"c", true}, {"d", false}}}));
  EXPECT_EQ(detail::todoListItem(nullptr, ""), (TodoListItem{"turn-plan:", {}}));
}

}  // namespace
