#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "OrmelSDK/AppServerRun/Parsing/ServerRequestParsing.h"
#include "Support/AskedRun.h"
#include "Support/PayloadChecks.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tests::json;

using Answers = std::map<std::string, std::vector<std::string>>;

constexpr const char* askUser = "item/tool/requestUserInput";
constexpr const char* question = R"({"itemId":"i","questions":[{"id":"q","question":"Which?"}]})";

JSONValue argumentsOf(std::string_view params) {
  const JSONValue object = json(params);
  return detail::requestUserInputArguments(*object.objectValue());
}

/// The only question of the arguments.
JSONValue questionOf(std::string_view text) {
  const JSONValue arguments = argumentsOf(R"({"questions":[)" + std::string(text) + "]}");
  const JSONArray& questions = *arguments.find("questions")->arrayValue();
  EXPECT_EQ(questions.size(), 1U);
  return *questions.begin();
}

/// The value that the question has under the key.
JSONValue memberOf(std::string_view text, std::string_view key) {
  const JSONValue asked = questionOf(text);
  return *asked.find(key);
}

JSONValue optionsOf(std::string_view text) { return memberOf(text, "options"); }

TEST(RequestUserInputArguments, HaveAllThatIsNeededToShowAQuestion) {
  EXPECT_EQ(argumentsOf(R"({"questions":[{"id":"q","question":"Which?","header":"H","isSecret":true,
      "options":[{"label":"A","description":" first "}]}],"isBlocking":false,"autoResolutionMs":5})"),
            json(R"({"questions":[{"id":"q","prompt":"Which?","question":"Which?","header":"H","isOther":false,
      "isSecret":true,"options":[{"title":"A","label":"A","description":"first","recommended":false,
      "requiresCustomInput":false,"isOther":false}]}],"isBlocking":false,"autoResolutionMs":5})"));
}

TEST(RequestUserInputArguments, HaveDefaults) {
  const JSONValue none = json(R"({"questions":[],"isBlocking":true})");
  for (const char* params : {"{}", R"({"questions":{},"isBlocking":"no","autoResolutionMs":"5"})",
                             R"({"questions":[7,null,"q",[]],"autoResolutionMs":1.5})"}) {
    EXPECT_EQ(argumentsOf(params), none) << params;
  }
  EXPECT_EQ(questionOf(R"({"id":"q"})"),
            json(R"({"id":"q","prompt":"Please choose an option","question":"Please choose an option","header":"",
      "isOther":false,"isSecret":false,"options":[]})"));
}

TEST(RequestUserInputArguments, ReadEitherSpelling) {
  EXPECT_EQ(argumentsOf(R"({"is_blocking":false,"auto_resolution_ms":5})"),
            json(R"({"questions":[],"isBlocking":false,"autoResolutionMs":5})"));
  EXPECT_EQ(argumentsOf(R"({"isBlocking":1,"is_blocking":false,"autoResolutionMs":true,"auto_resolution_ms":5})"),
            json(R"({"questions":[],"isBlocking":false,"autoResolutionMs":5})"));
  EXPECT_EQ(argumentsOf(R"({"isBlocking":false,"is_blocking":true,"autoResolutionMs":0,"auto_resolution_ms":5})"),
            json(R"({"questions":[],"isBlocking":false,"autoResolutionMs":0})"));
  EXPECT_EQ(memberOf(R"({"id":"q","is_secret":true})", "isSecret"), JSONValue(true));
  EXPECT_EQ(memberOf(R"({"id":"q","isSecret":false,"is_secret":true})", "isSecret"), JSONValue(false));
  EXPECT_EQ(memberOf(R"({"id":"q","is_other":true})", "isOther"), JSONValue(false));
}

TEST(RequestUserInputArguments, AskByTheHeaderWhereThereIsNoQuestion) {
  const JSONValue asked = questionOf(R"({"id":"q","question":7,"header":"H"})");
  EXPECT_EQ(*asked.find("prompt"), JSONValue("H"));
  EXPECT_EQ(*asked.find("question"), JSONValue("H"));
  EXPECT_EQ(memberOf(R"({"id":"q","question":"Q","header":7})", "header"), JSONValue(""));
}

TEST(RequestUserInputArguments, GiveQuestionsWithoutAnIDANewOne) {
  const JSONValue arguments = argumentsOf(R"({"questions":[{},{"id":7}]})");
  const JSONArray& questions = *arguments.find("questions")->arrayValue();
  const auto id = [](const JSONValue& asked) { return std::string(*asked.find("id")->stringValue()); };
  EXPECT_EQ(id(questions[0]).size(), 36U);
  EXPECT_EQ(id(questions[1]).size(), 36U);
  EXPECT_NE(id(questions[0]), id(questions[1]));
}

TEST(RequestUserInputArguments, CountOptionsWithoutALabelByTheirPlace) {
  EXPECT_EQ(optionsOf(R"({"id":"q","options":[7,{"label":"A","description":"  \n"},null,{"description":"d"},
      {"label":5,"description":5}]})"),
            json(R"([{"title":"A","label":"A","recommended":false,"requiresCustomInput":false,"isOther":false},
      {"title":"Option 4","label":"Option 4","description":"d","recommended":false,"requiresCustomInput":false,
       "isOther":false},
      {"title":"Option 5","label":"Option 5","recommended":false,"requiresCustomInput":false,"isOther":false}])"));
}

TEST(RequestUserInputArguments, OfferAnOwnAnswerLast) {
  const std::string other =
      R"({"title":"Other","label":"Other","recommended":false,"requiresCustomInput":true,"isOther":true})";
  EXPECT_EQ(optionsOf(R"({"id":"q","isOther":true})"), json("[" + other + "]"));
  EXPECT_EQ(optionsOf(R"({"id":"q","isOther":true,"options":{}})"), json("[" + other + "]"));
  EXPECT_EQ(optionsOf(R"({"id":"q","isOther":true,"options":[{"label":"A"}]})"),
            json(R"([{"title":"A","label":"A","recommended":false,"requiresCustomInput":false,"isOther":false},)" +
                 other + "]"));
  EXPECT_EQ(optionsOf(R"({"id":"q","isOther":1})"), json("[]"));
}

/// The tool call that stands for the question.
McpToolCallItem shown(std::string_view params) {
  McpToolCallItem item;
  item.id = "i";
  item.server = "ormel";
  item.tool = "request_user_input";
  item.arguments = argumentsOf(params);
  item.status = McpToolCallStatus::inProgress;
  return item;
}

TEST(AppServerTurnRunUserInput, IsShownAndWaitsForTheUser) {
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler);
  asked.ask(askUser, question);
  asked.engine.pass(std::chrono::minutes(1));
  EXPECT_EQ(asked.events(), (std::vector<ThreadEvent>{ItemStartedEvent{shown(question), {}, {}, {}}}));
  EXPECT_THAT(asked.answers(), IsEmpty());
  EXPECT_EQ(asked.engine.run->serverRequests().count(), 0U);
}

void submit(AskedRun& asked, const Answers& answers, const char* itemID = "i",
            std::optional<std::uint64_t> expected = std::nullopt) {
  asked.engine.end(asked.engine.run->submitUserInput(itemID, answers, expected));
}

TEST(AppServerTurnRunUserInput, WritesTheAnswersAndCompletesTheItem) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SCOPED_TRACE("");
    AskedRun asked(scheduler);
    asked.ask(askUser, question, 42);
    submit(asked, {{"q", {"A", "ü"}}, {"none", {}}}, "i", 1);
    const std::string result = R"({"answers":{"q":{"answers":["A","ü"]},"none":{"answers":[]}}})";
    EXPECT_EQ(asked.answers(), jsonList({R"({"id":42,"result":)" + result + "}"}));
    McpToolCallItem ended = shown(question);
    ended.status = McpToolCallStatus::completed;
    ended.result = McpToolCallResult{{json(result)}, {}, {}};
    EXPECT_EQ(asked.events(), (std::vector<ThreadEvent>{ItemStartedEvent{shown(question), {}, {}, {}},
                                                        ItemCompletedEvent{ended, {}, {}, {}}}));
    EXPECT_EQ(failureOf([&] { submit(asked, {}); }), "stream error: No pending request_user_input call for item: i");
    EXPECT_EQ(asked.answers().size(), 1U);
  });
}

TEST(AppServerTurnRunUserInput, MayBeAnsweredWithNothing) {
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler);
  asked.ask(askUser, question);
  submit(asked, {});
  EXPECT_EQ(asked.answers(), jsonList({R"({"id":"q1","result":{"answers":{}}})"}));
}

TEST(AppServerTurnRunUserInput, KeepsWhatTheServerSaidOfItsItemButTheError) {
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler);
  asked.ask(askUser, question);
  asked.engine.notify("item/updated",
                      R"({"item":{"type":"mcpToolCall","id":"i","server":"s","tool":"t","status":"failed",
      "error":{"message":"e"},"result":{"content":[1]},"durationMs":5}})");
  submit(asked, {{"q", {"A"}}});
  const auto events = asked.events();
  const auto* ended = std::get_if<ItemCompletedEvent>(&events.back().value);
  ASSERT_TRUE(ended);
  const auto& item = std::get<McpToolCallItem>(ended->item.value);
  EXPECT_EQ(item.server, "s");
  EXPECT_EQ(item.durationMilliseconds, 5);
  EXPECT_EQ(item.error, std::nullopt);
  EXPECT_EQ(item.status, McpToolCallStatus::completed);
  EXPECT_EQ(item.result, (McpToolCallResult{{json(R"({"answers":{"q":{"answers":["A"]}}})")}, {}, {}}));
}

TEST(AppServerTurnRunUserInput, AnswersButTellsNothingOfAnItemOfAnotherKind) {
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler);
  asked.ask(askUser, question);
  asked.engine.notify("item/updated", R"({"item":{"type":"sleep","id":"i"}})");
  submit(asked, {{"q", {"A"}}});
  EXPECT_EQ(asked.answers().size(), 1U);
  EXPECT_THAT(asked.words(), ElementsAre("item.started i", "item.updated i"));
}

TEST(AppServerTurnRunUserInput, AnswersTheLastOfTwoQuestionsOfOneItem) {
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler);
  asked.ask(askUser, question, "first");
  asked.ask(askUser, question, "second");
  submit(asked, {});
  EXPECT_EQ(asked.answers(), jsonList({R"({"id":"second","result":{"answers":{}}})"}));
  EXPECT_EQ(failureOf([&] { submit(asked, {}); }), "stream error: No pending request_user_input call for item: i");
}

TEST(AppServerTurnRunUserInput, AnswersEachOfSeveralItemsInAnyOrder) {
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler);
  asked.ask(askUser, R"({"itemId":"a"})", 1);
  asked.ask(askUser, R"({"itemId":"b"})", 2);
  EXPECT_EQ(failureOf([&] { submit(asked, {}, "c"); }), "stream error: No pending request_user_input call for item: c");
  submit(asked, {}, "b");
  submit(asked, {}, "a");
  EXPECT_EQ(asked.answers(), jsonList({R"({"id":2,"result":{"answers":{}}})", R"({"id":1,"result":{"answers":{}}})"}));
  EXPECT_THAT(asked.words(), ElementsAre("item.started a", "item.started b", "item.completed b", "item.completed a"));
}

TEST(AppServerTurnRunUserInput, IsForgottenWithItsOperation) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    AskedRun asked(scheduler);
    asked.ask(askUser, question);
    asked.engine.completeTurn();
    EXPECT_EQ(failureOf([&] { submit(asked, {}); }), "stream error: No active turn for request_user_input response");
    asked.ask(askUser, question);
    asked.startTurn();
    EXPECT_EQ(failureOf([&] { submit(asked, {}, "i", 1); }),
              "stream error: No active turn for request_user_input response");
    EXPECT_EQ(failureOf([&] { submit(asked, {}, "i", 2); }),
              "stream error: No pending request_user_input call for item: i");
    EXPECT_THAT(asked.answers(), IsEmpty());
  });
}

// An idle server may ask for ever, and may announce things that belong to no turn.
TEST(AppServerTurnRunUserInput, IsNotKeptBetweenOperationsNorIsAnyItem) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    AskedRun asked(scheduler);
    asked.ask(askUser, question);
    asked.engine.completeTurn();
    const auto& run = *asked.engine.run;
    const auto itemsOfTheTurn = run.items().count();
    EXPECT_GT(itemsOfTheTurn, 0U);
    for (int round = 0; round < 100; ++round) {
      const std::string number = std::to_string(round);
      asked.ask(askUser, R"({"itemId":")" + number + R"("})", "ask" + number);
      asked.ask("mcpServer/elicitation/request", R"({"threadId":"t1","serverName":"s","mode":"form","message":"m"})",
                "elicit" + number);
      asked.engine.notify("thread/contextCompacted", R"({"id":"compaction)" + number + R"("})");
      asked.engine.notify("item/started", R"({"item":{"type":"sleep","id":"s)" + number + R"("}})");
      EXPECT_EQ(run.serverRequests().findUserInput(number), std::nullopt);
    }
    EXPECT_EQ(run.items().count(), itemsOfTheTurn);
    EXPECT_EQ(run.serverRequests().count(), 0U);
    asked.startTurn();
    EXPECT_EQ(run.items().count(), 0U);
  });
}

TEST(AppServerTurnRunUserInput, CanBeSubmittedAgainWhenItCouldNotBeWritten) {
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler);
  asked.ask(askUser, question);
  asked.engine.onClientWrite = [](const std::string&) { throw std::runtime_error("out of memory"); };
  EXPECT_EQ(failureOf([&] { submit(asked, {{"q", {"A"}}}); }),
            "stream error: Failed to submit request_user_input response: out of memory");
  EXPECT_EQ(asked.engine.state(), "pending");
  EXPECT_THAT(asked.words(), ElementsAre("item.started i"));
  asked.engine.onClientWrite = nullptr;
  submit(asked, {{"q", {"A"}}});
  EXPECT_EQ(asked.answers().back(), json(R"({"id":"q1","result":{"answers":{"q":{"answers":["A"]}}}})"));
  EXPECT_THAT(asked.words(), ElementsAre("item.started i", "item.completed i"));
}

// Only a pipe that calls back could do that.
TEST(AppServerTurnRunUserInput, FailsWhenTheOperationEndsWhileItIsBeingWritten) {
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler);
  asked.ask(askUser, question);
  asked.engine.onClientWrite = [&asked](const std::string&) {
    asked.engine.run->release().start([](TaskResult<void> result) { result.take(); });
  };
  EXPECT_EQ(failureOf([&] { submit(asked, {}); }),
            "stream error: Failed to submit request_user_input response: The app-server operation is no longer "
            "current");
  EXPECT_THAT(asked.words(), ElementsAre("item.started i", "end"));
}

TEST(AppServerTurnRunUserInput, CannotBeSubmittedToAnExitedServer) {
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler);
  asked.ask(askUser, question);
  asked.engine.process().exit(1);
  asked.engine.settle();
  EXPECT_EQ(failureOf([&] { submit(asked, {}); }), "stream error: No active turn for request_user_input response");
}

TEST(AppServerTurnRunUserInput, IsWrittenAsTextWhateverItsBytesAre) {
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler);
  asked.ask(askUser, question);
  submit(asked, {{"\xc3", {"a\xff\n"}}});
  EXPECT_EQ(asked.answers(), jsonList({R"({"id":"q1","result":{"answers":{"\ufffd":{"answers":["a\ufffd\n"]}}}})"}));
}

TEST(AppServerTurnRunUserInput, OutlivesTheWordThatItIsResolved) {
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler);
  asked.ask(askUser, question);
  asked.engine.notify("serverRequest/resolved", R"({"requestId":"q1"})");
  submit(asked, {});
  EXPECT_EQ(asked.answers().size(), 1U);
}

}  // namespace
