#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
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

/// A request, and the answer that grants nothing.
struct Closed {
  const char* method;
  const char* params;
  const char* result;
};

constexpr Closed closedAnswers[] = {
    {"item/commandExecution/requestApproval", "{}", R"({"decision":"decline"})"},
    {"item/commandExecution/requestApproval", R"({"availableDecisions":["accept","cancel"]})",
     R"({"decision":"cancel"})"},
    {"item/fileChange/requestApproval", "{}", R"({"decision":"decline"})"},
    {"item/fileChange/requestApproval", R"({"available_decisions":["cancel"]})", R"({"decision":"cancel"})"},
    {"item/permissions/requestApproval", R"({"permissions":{"network":{"enabled":true}}})",
     R"({"permissions":{},"scope":"turn"})"},
    {"mcpServer/elicitation/request", R"({"serverName":"s","mode":"form","message":"m","requestedSchema":{}})",
     R"({"action":"cancel","content":null,"_meta":null})"},
    {"attestation/generate", "{}", R"({"token":""})"},
};

/// Handlers that all fail as `fail` does.
template <typename Fail>
ThreadOptions failing(Fail fail) {
  ThreadOptions options;
  options.commandApprovalHandler = [fail](const CommandApprovalRequest&) -> OrmelApprovalDecision {
    fail();
    return OrmelApprovalDecision::accept;
  };
  options.fileChangeApprovalHandler = [fail](FileChangeApprovalRequest) -> Task<OrmelApprovalDecision> {
    fail();
    co_return OrmelApprovalDecision::accept;
  };
  options.permissionsApprovalHandler = [fail](const PermissionsApprovalRequest&) -> PermissionsApprovalResponse {
    fail();
    return {{JSONValue(true), JSONValue(true)}, PermissionGrantScope::session};
  };
  options.mcpServerElicitationHandler = [fail](McpServerElicitationRequest) -> Task<McpServerElicitationResponse> {
    fail();
    co_return McpServerElicitationResponse{McpServerElicitationAction::accept, JSONValue(1), JSONValue(2)};
  };
  options.attestationGenerateHandler = [fail]() -> std::string {
    fail();
    return "token";
  };
  options.parlaneAuthTokensRefreshHandler =
      [fail](ParlaneAuthTokensRefreshRequest) -> ParlaneAuthTokensRefreshResponse {
    fail();
    return {"token", "account", {}};
  };
  return options;
}

std::vector<std::pair<std::string, ThreadOptions>> failingHandlers() {
  return {{"stream error: Failed handling app-server request: no", failing([] { throw std::runtime_error("no"); })},
          {"stream error: Failed handling app-server request: Unknown failure", failing([] { throw 7; })},
          {"stream error: Failed handling app-server request: Operation aborted",
           failing([] { throw OrmelProcessError::aborted(); })},
          {"stream error: Failed handling app-server request: said",
           failing([] { throw ThreadRunError::streamError("said"); })},
          {"stream error: Failed handling app-server request: " + std::string(CancelledError().what()),
           failing([] { throw CancelledError(); })}};
}

TEST(AppServerTurnRunServerRequests, AreAnsweredWithNothingGrantedWhereNoHandlerIs) {
  for (const Closed& closed : closedAnswers) {
    EXPECT_EQ(resultOf(closed.method, closed.params), json(closed.result)) << closed.method;
  }
}

TEST(AppServerTurnRunServerRequests, AreAnsweredWithNothingGrantedWhereTheHandlerFails) {
  for (const auto& [failure, options] : failingHandlers()) {
    for (const Closed& closed : closedAnswers) {
      EXPECT_EQ(resultOf(closed.method, closed.params, options), json(closed.result)) << closed.method << failure;
    }
  }
}

TEST(AppServerTurnRunServerRequests, FailTheTurnWhereTokensAreNotToBeHad) {
  for (const auto& [failure, options] : failingHandlers()) {
    EXPECT_EQ(endOn("account/parlaneAuthTokens/refresh", "{}", options), failure);
  }
}

TEST(AppServerTurnRunServerRequests, FailTheTurnWhereTheyLackWhatTheyAreAbout) {
  const std::pair<std::pair<const char*, const char*>, const char*> cases[] = {
      {{"item/tool/requestUserInput", "{}"}, "request_user_input payload missing itemId"},
      {{"item/tool/requestUserInput", R"({"item_id":"i"})"}, "request_user_input payload missing itemId"},
      {{"item/tool/requestUserInput", R"({"itemId":7})"}, "request_user_input payload missing itemId"},
      {{"mcpServer/elicitation/request", R"({"serverName":"s","mode":"form"})"},
       "MCP elicitation form request missing message"},
      {{"mcpServer/elicitation/request", R"({"serverName":"s","mode":"velnor/form","message":7})"},
       "MCP elicitation form request missing message"},
      {{"mcpServer/elicitation/request", R"({"serverName":"s","mode":"velnorForm"})"},
       "MCP elicitation form request missing message"},
      {{"mcpServer/elicitation/request", R"({"serverName":"s","mode":"url","url":"u","elicitationId":"e"})"},
       "MCP elicitation URL request missing fields"},
      {{"mcpServer/elicitation/request", R"({"serverName":"s","mode":"url","message":"m","elicitationId":"e"})"},
       "MCP elicitation URL request missing fields"},
      {{"mcpServer/elicitation/request", R"({"serverName":"s","mode":"url","message":"m","url":"u"})"},
       "MCP elicitation URL request missing fields"},
      {{"item/tool/call", "{}"}, "dynamic tool call missing tool name"},
      {{"item/tool/call", R"({"tool":7})"}, "dynamic tool call missing tool name"},
      {{"account/parlaneAuthTokens/refresh", "{}"},
       "Parlane auth token refresh requested without a configured handler"},
  };
  for (const auto& [request, message] : cases) {
    EXPECT_EQ(endOn(request.first, request.second), std::string("stream error: ") + message) << request.second;
  }
}

TEST(AppServerTurnRunServerRequests, OfUnknownMethodsAreRefused) {
  for (const std::string method :
       {"foo/bar", "item/tool/Call", "attestation/generate/", "item/tool/requestuserinput"}) {
    const JSONValue error = JSONValue::object({{"code", -32601}, {"message", "Method not found: " + method}});
    EXPECT_EQ(answerTo(method, "{}"), JSONValue::object({{"id", "q1"}, {"error", error}}));
  }
}

TEST(AppServerTurnRunServerRequests, OfUnknownMethodsAreRefusedBetweenTurnsToo) {
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler);
  asked.engine.completeTurn();
  asked.ask("foo/bar", "[]", 5);
  EXPECT_EQ(asked.answers(), jsonList({R"({"id":5,"error":{"code":-32601,"message":"Method not found: foo/bar"}})"}));
  EXPECT_EQ(asked.engine.state(), "finished");
}

TEST(AppServerTurnRunServerRequests, GetTheirIDBackAsItCame) {
  for (const JSONValue& id : {JSONValue(0), JSONValue(-7), JSONValue(std::int64_t{1} << 53), JSONValue(""),
                              JSONValue("7"), JSONValue("ü\n")}) {
    SimulatedScheduler scheduler(1);
    AskedRun asked(scheduler);
    asked.ask("attestation/generate", "{}", id);
    EXPECT_EQ(asked.answers(),
              (std::vector<JSONValue>{JSONValue::object({{"id", id}, {"result", json(R"({"token":""})")}})}));
  }
}

TEST(AppServerTurnRunServerRequests, NeedAnID) {
  for (const char* payload : {R"({"method":"foo/bar"})", R"({"id":null})", R"({"id":[]})", R"({"id":true})"}) {
    EXPECT_EQ(failureOf([payload] { (void)detail::serverRequestID(json(payload)); }),
              "stream error: Server request missing id");
  }
  EXPECT_EQ(detail::serverRequestID(json(R"({"id":3})")), AppServerRequestID::integer(3));
}

TEST(AppServerTurnRunServerRequests, TakeParamsThatAreNoObjectForEmptyOnes) {
  for (const char* params : {"null", "[]", "7"}) {
    EXPECT_EQ(resultOf("item/commandExecution/requestApproval", params), json(R"({"decision":"decline"})"));
    EXPECT_EQ(endOn("item/tool/call", params), "stream error: dynamic tool call missing tool name");
  }
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler);
  asked.engine.write(R"({"id":1,"method":"attestation/generate"})"
                     "\n");
  EXPECT_EQ(asked.answers(), jsonList({R"({"id":1,"result":{"token":""}})"}));
}

TEST(AppServerTurnRunServerRequests, FailTheTurnWhoseAnswerCannotBeWritten) {
  ThreadOptions options;
  options.commandApprovalHandler = [](const CommandApprovalRequest&) {
    return OrmelApprovalDecision(std::numeric_limits<double>::infinity());
  };
  const std::string reason = failureOf([] { (void)JSONValue(std::numeric_limits<double>::infinity()).encode(); });
  const std::string text = reason.substr(reason.find(": ") + 2);
  EXPECT_EQ(endOn("item/commandExecution/requestApproval", "{}", options),
            "stream error: Failed responding to app-server request: " + text);
}

TEST(AppServerTurnRunServerRequests, TellNothingOfAnElicitationWhoseAnswerCannotBeWritten) {
  ThreadOptions options;
  options.mcpServerElicitationHandler = [](const McpServerElicitationRequest&) {
    return McpServerElicitationResponse{
        McpServerElicitationAction::accept, JSONValue(std::numeric_limits<double>::quiet_NaN()), {}};
  };
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler, options);
  asked.ask("mcpServer/elicitation/request", R"({"serverName":"s","mode":"form","message":"m"})");
  ASSERT_EQ(asked.words().size(), 2U);
  EXPECT_EQ(asked.words().front(), "item.started mcp-server-elicitation:q1");
  EXPECT_TRUE(asked.words().back().starts_with("stream error: Failed responding to app-server request: "));
  EXPECT_THAT(asked.answers(), IsEmpty());
}

TEST(AppServerTurnRunServerRequests, AreServedWhileTheTurnIsNotYetKnown) {
  ThreadOptions options;
  CommandApprovalRequest seen;
  options.commandApprovalHandler = [&seen](const CommandApprovalRequest& request) {
    seen = request;
    return OrmelApprovalDecision::accept;
  };
  SimulatedRun::Options all;
  all.thread = options;
  SimulatedScheduler scheduler(1);
  SimulatedRun engine(scheduler, all);
  engine.keep("thread/start");
  const auto starting = engine.start(engine.turn());
  engine.write(R"({"id":1,"method":"item/commandExecution/requestApproval","params":{"command":"ls"}})"
               "\n");
  EXPECT_EQ(engine.process().linesWritten().back(), R"({"id":1,"result":{"decision":"accept"}})");
  EXPECT_EQ(seen.threadID, "");
  EXPECT_EQ(seen.turnID, "");
  engine.answerKept(R"({"thread":{"id":"t1"}})");
  EXPECT_TRUE(starting->isSet());
}

TEST(AppServerTurnRunServerRequests, AreServedBesideEachOtherAndBesideTheReader) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    ThreadOptions options;
    std::vector<OneShot<bool>> gates(3);
    options.commandApprovalHandler = [&gates](CommandApprovalRequest request) -> Task<OrmelApprovalDecision> {
      const bool isAllowed = co_await gates[std::stoul(request.itemID)].wait();
      co_return isAllowed ? OrmelApprovalDecision::accept : OrmelApprovalDecision::decline;
    };
    AskedRun asked(scheduler, options);
    for (const char* id : {"0", "1", "2"}) {
      asked.ask("item/commandExecution/requestApproval", std::string(R"({"itemId":")") + id + "\"}", id);
    }
    asked.engine.notify("warning", R"({"message":"meanwhile"})");
    EXPECT_THAT(asked.words(), ElementsAre("warning meanwhile"));
    EXPECT_EQ(asked.engine.run->serverRequests().count(), 3U);
    gates[1].resolver().resume(true);
    asked.engine.settle();
    gates[0].resolver().resume(false);
    asked.engine.settle();
    gates[2].resolver().resume(true);
    asked.engine.settle();
    EXPECT_EQ(asked.answers(),
              jsonList({R"({"id":"1","result":{"decision":"accept"}})", R"({"id":"0","result":{"decision":"decline"}})",
                        R"({"id":"2","result":{"decision":"accept"}})"}));
  });
}

}  // namespace
