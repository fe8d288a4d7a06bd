#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "Support/AskedRun.h"
#include "Support/PayloadChecks.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using ::testing::IsEmpty;
using tests::json;

constexpr const char* elicit = "mcpServer/elicitation/request";
constexpr const char* form = R"({"serverName":"s","mode":"form","message":"m","requestedSchema":{"type":"object"}})";
constexpr const char* cancelled = R"({"action":"cancel","content":null,"_meta":null})";

ThreadOptions answering(const McpServerElicitationResponse& response) {
  ThreadOptions options;
  options.mcpServerElicitationHandler = [response](const McpServerElicitationRequest&) { return response; };
  return options;
}

/// The request that the handler gets; nothing if it is not called.
std::optional<McpServerElicitationRequest> requestOf(std::string_view params) {
  std::optional<McpServerElicitationRequest> seen;
  ThreadOptions options;
  options.mcpServerElicitationHandler = [&seen](const McpServerElicitationRequest& request) {
    seen = request;
    return McpServerElicitationResponse();
  };
  EXPECT_EQ(resultOf(elicit, params, options), json(cancelled));
  return seen;
}

TEST(AppServerTurnRunElicitation, ReadsEachMode) {
  const JSONValue schema = json(R"({"type":"object"})");
  const JSONValue meta = json(R"({"a":1})");
  const std::string words = R"(,"message":"m","requestedSchema":{"type":"object"},"_meta":{"a":1}})";
  const std::pair<std::string, McpServerElicitationMode> cases[] = {
      {R"({"serverName":"s","mode":"form")" + words, McpServerElicitationMode::form("m", schema, meta)},
      {R"({"serverName":"s","mode":"velnor/form")" + words, McpServerElicitationMode::velnorForm("m", schema, meta)},
      {R"({"serverName":"s","mode":"velnorForm")" + words, McpServerElicitationMode::velnorForm("m", schema, meta)},
      {R"({"serverName":"s","mode":"form","message":""})", McpServerElicitationMode::form("", JSONValue())},
      {R"({"serverName":"s","mode":"url","message":"m","url":"u","elicitationId":"e","_meta":{"a":1}})",
       McpServerElicitationMode::url("m", "u", "e", meta)},
      {R"({"serverName":"s","mode":"url","message":"m","url":"u","elicitationId":"e"})",
       McpServerElicitationMode::url("m", "u", "e")},
  };
  for (const auto& [params, mode] : cases) {
    EXPECT_EQ(requestOf(params), (McpServerElicitationRequest{"t1", {}, "s", mode})) << params;
  }
}

TEST(AppServerTurnRunElicitation, BelongsToATurnOnlyWhereOneIsNamed) {
  const auto named =
      requestOf(R"({"threadId":"t","turnId":"u","serverName":"s","mode":"form","message":"m","requestedSchema":1})");
  EXPECT_EQ(named, (McpServerElicitationRequest{"t", "u", "s", McpServerElicitationMode::form("m", JSONValue(1))}));
  const auto unnamed = requestOf(R"({"thread_id":"t","turn_id":"u","serverName":"s","mode":"form","message":"m"})");
  EXPECT_EQ(unnamed, (McpServerElicitationRequest{"t1", {}, "s", McpServerElicitationMode::form("m", JSONValue())}));
}

TEST(AppServerTurnRunElicitation, IsCancelledUnseenWhereItCannotBePlacedOrIsOfAnUnknownMode) {
  for (const char* params :
       {"{}", R"({"serverName":"s"})", R"({"mode":"form","message":"m"})", R"({"serverName":7,"mode":"form"})",
        R"({"serverName":"s","mode":7,"message":"m"})", R"({"serverName":"s","mode":"voice","message":"m"})",
        R"({"serverName":"s","mode":"Form","message":"m"})", R"({"server_name":"s","mode":"form","message":"m"})"}) {
    SimulatedScheduler scheduler(1);
    bool isCalled = false;
    ThreadOptions options;
    options.mcpServerElicitationHandler = [&isCalled](const McpServerElicitationRequest&) {
      isCalled = true;
      return McpServerElicitationResponse();
    };
    AskedRun asked(scheduler, options);
    asked.ask(elicit, params);
    EXPECT_FALSE(isCalled) << params;
    EXPECT_EQ(asked.answers(), jsonList({std::string(R"({"id":"q1","result":)") + cancelled + "}"})) << params;
    EXPECT_THAT(asked.events(), IsEmpty()) << params;
  }
}

TEST(AppServerTurnRunElicitation, WithoutAThreadIsCancelledUnseen) {
  SimulatedScheduler scheduler(1);
  SimulatedRun engine(scheduler);
  engine.keep("thread/start");
  const auto starting = engine.start(engine.turn());
  engine.process().request(1, elicit, json(form));
  engine.settle();
  EXPECT_EQ(json(engine.process().linesWritten().back()),
            json(R"({"id":1,"result":{"action":"cancel","content":null,"_meta":null}})"));
  engine.answerKept(R"({"thread":{"id":"t1"}})");
  EXPECT_TRUE(starting->isSet());
}

TEST(AppServerTurnRunElicitation, IsAnsweredAsTheUserDoes) {
  const std::pair<McpServerElicitationResponse, const char*> cases[] = {
      {{McpServerElicitationAction::accept, json(R"({"name":"x"})"), json(R"({"b":2})")},
       R"({"action":"accept","content":{"name":"x"},"_meta":{"b":2}})"},
      {{McpServerElicitationAction::decline, {}, {}}, R"({"action":"decline","content":null,"_meta":null})"},
      {{McpServerElicitationAction::cancel, JSONValue(), {}}, cancelled},
  };
  for (const auto& [response, result] : cases) EXPECT_EQ(resultOf(elicit, form, answering(response)), json(result));
}

/// The item that shows the elicitation, begun and ended.
McpToolCallItem shown(McpToolCallStatus status, const JSONValue& arguments, std::string id) {
  McpToolCallItem item;
  item.id = std::move(id);
  item.server = "s";
  item.tool = "elicitation/request";
  item.arguments = arguments;
  item.status = status;
  return item;
}

TEST(AppServerTurnRunElicitation, IsShownAsAToolCallThatItsAnswerCompletes) {
  const std::pair<McpServerElicitationResponse, McpToolCallResult> cases[] = {
      {{McpServerElicitationAction::accept, json("[1,2]"), json(R"({"b":2})")},
       {{JSONValue(1), JSONValue(2)}, {}, json(R"({"b":2})")}},
      {{McpServerElicitationAction::accept, json(R"({"name":"x"})"), JSONValue()}, {{json(R"({"name":"x"})")}, {}, {}}},
      {{McpServerElicitationAction::accept, JSONValue("text"), {}}, {{JSONValue("text")}, {}, {}}},
      {{McpServerElicitationAction::decline, {}, {}}, {}},
      {{McpServerElicitationAction::accept, json("[]"), {}}, {}},
  };
  for (const auto& [response, result] : cases) {
    SimulatedScheduler scheduler(1);
    AskedRun asked(scheduler, answering(response));
    const std::string params =
        R"({"threadId":"t","turnId":"u","serverName":"s","mode":"form","message":"m","requestedSchema":{}})";
    asked.ask(elicit, params);
    McpToolCallItem ended = shown(McpToolCallStatus::completed, json(params), "mcp-server-elicitation:q1");
    ended.result = result;
    EXPECT_EQ(asked.events(),
              (std::vector<ThreadEvent>{
                  ItemStartedEvent{
                      shown(McpToolCallStatus::inProgress, json(params), "mcp-server-elicitation:q1"), "t", "u", {}},
                  ItemCompletedEvent{ended, {}, {}, {}}}));
  }
}

TEST(AppServerTurnRunElicitation, IsShownAndClosedWithoutAHandlerToo) {
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler);
  asked.ask(elicit, form, 12);
  McpToolCallItem ended = shown(McpToolCallStatus::completed, json(form), "mcp-server-elicitation:12");
  ended.result = McpToolCallResult();
  EXPECT_EQ(
      asked.events(),
      (std::vector<ThreadEvent>{
          ItemStartedEvent{shown(McpToolCallStatus::inProgress, json(form), "mcp-server-elicitation:12"), "t1", {}, {}},
          ItemCompletedEvent{ended, {}, {}, {}}}));
}

TEST(AppServerTurnRunElicitation, KeepsWhatItAskedThoughItsItemChangesMeanwhile) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    OneShot<bool> gate;
    ThreadOptions options;
    options.mcpServerElicitationHandler = [&gate](McpServerElicitationRequest) -> Task<McpServerElicitationResponse> {
      co_await gate.wait();
      co_return McpServerElicitationResponse();
    };
    AskedRun asked(scheduler, options);
    asked.ask(elicit, form);
    asked.engine.notify("item/mcpToolCall/progress", R"({"itemId":"mcp-server-elicitation:q1","message":"half"})");
    gate.resolver().resume(true);
    asked.engine.settle();
    const auto events = asked.events();
    ASSERT_EQ(events.size(), 3U);
    const auto* updated = std::get_if<ItemUpdatedEvent>(&events[1].value);
    ASSERT_TRUE(updated);
    EXPECT_EQ(std::get<McpToolCallItem>(updated->item.value).progressMessage, "half");
    McpToolCallItem ended = shown(McpToolCallStatus::completed, json(form), "mcp-server-elicitation:q1");
    ended.result = McpToolCallResult();
    EXPECT_EQ(events[2], (ThreadEvent{ItemCompletedEvent{ended, {}, {}, {}}}));
  });
}

}  // namespace
