#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
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

constexpr const char* call = "item/tool/call";
constexpr const char* refresh = "account/parlaneAuthTokens/refresh";
constexpr const char* attest = "attestation/generate";

using Execute = AsyncHandler<DynamicToolResult(DynamicToolCallContext)>;

DynamicTool toolNamed(std::string name, std::optional<std::string> namespaceOfTool, Execute execute) {
  DynamicToolSpec spec;
  spec.namespace_ = std::move(namespaceOfTool);
  spec.name = std::move(name);
  return {std::move(spec), std::move(execute)};
}

/// A tool that says who it is.
DynamicTool namedTool(std::string name, std::optional<std::string> namespaceOfTool, std::string says) {
  return toolNamed(std::move(name), std::move(namespaceOfTool), [says](const DynamicToolCallContext&) {
    return DynamicToolResult{{DynamicToolCallOutputContentItem::inputText(says)}, true};
  });
}

ThreadOptions withTools(std::vector<DynamicTool> tools) {
  ThreadOptions options;
  options.dynamicTools = std::move(tools);
  return options;
}

JSONValue said(const std::string& text, bool success) {
  const JSONValue item = JSONValue::object({{"type", "inputText"}, {"text", text}});
  return JSONValue::object({{"contentItems", JSONValue::array({item})}, {"success", success}});
}

TEST(AppServerTurnRunToolCalls, FailWhereTheToolIsNotRegistered) {
  const JSONValue missing = said("Dynamic tool 'fetch' is not registered.", false);
  EXPECT_EQ(resultOf(call, R"({"tool":"fetch"})"), missing);
  EXPECT_EQ(resultOf(call, R"({"tool":"fetch"})", withTools({})), missing);
  EXPECT_EQ(
      resultOf(call, R"({"tool":"fetch"})", withTools({namedTool("Fetch", {}, "a"), namedTool("fetch", "n", "b")})),
      missing);
  EXPECT_EQ(resultOf(call, R"({"tool":"fetch","namespace":"m"})",
                     withTools({namedTool("fetch", "n", "a"), namedTool("fetch", {}, "b")})),
            missing);
  EXPECT_EQ(resultOf(call, R"({"tool":""})"), said("Dynamic tool '' is not registered.", false));
}

TEST(AppServerTurnRunToolCalls, GoToTheFirstToolOfTheNameAndNamespace) {
  const ThreadOptions options =
      withTools({namedTool("fetch", "n", "in n"), namedTool("fetch", {}, "first"), namedTool("fetch", {}, "second"),
                 namedTool("fetch", "", "in the empty one")});
  EXPECT_EQ(resultOf(call, R"({"tool":"fetch"})", options), said("first", true));
  EXPECT_EQ(resultOf(call, R"({"tool":"fetch","namespace":7})", options), said("first", true));
  EXPECT_EQ(resultOf(call, R"({"tool":"fetch","namespace":"n"})", options), said("in n", true));
  EXPECT_EQ(resultOf(call, R"({"tool":"fetch","namespace":""})", options), said("in the empty one", true));
}

TEST(AppServerTurnRunToolCalls, ReachAToolOfTheEmptyNamespaceWithoutANamespace) {
  const ThreadOptions options =
      withTools({namedTool("fetch", "n", "in n"), namedTool("fetch", "", "first"), namedTool("fetch", "", "second")});
  EXPECT_EQ(resultOf(call, R"({"tool":"fetch"})", options), said("first", true));
  EXPECT_EQ(resultOf(call, R"({"tool":"fetch","namespace":""})", options), said("first", true));
  EXPECT_EQ(resultOf(call, R"({"tool":"other"})", options), said("Dynamic tool 'other' is not registered.", false));
}

TEST(AppServerTurnRunToolCalls, TellTheToolWhatIsAsked) {
  std::vector<DynamicToolCallContext> seen;
  const ThreadOptions options = withTools({toolNamed("t", "n", [&seen](DynamicToolCallContext context) {
    seen.push_back(std::move(context));
    return DynamicToolResult();
  })});
  const JSONValue empty = json(R"({"contentItems":[],"success":false})");
  EXPECT_EQ(resultOf(call, R"({"tool":"t","namespace":"n","threadId":"a","turnId":"b","callId":"c","arguments":[1]})",
                     options),
            empty);
  // It is no other's call for want of ids.
  EXPECT_EQ(resultOf(call, R"({"tool":"t","namespace":"n","threadId":7,"thread_id":"x","turn_id":"x","call_id":"x"})",
                     options),
            empty);
  EXPECT_EQ(resultOf(call, R"({"tool":"t","namespace":"n","arguments":null})", options), empty);
  EXPECT_THAT(seen, ElementsAre(DynamicToolCallContext{"a", "b", "c", "n", "t", json("[1]")},
                                DynamicToolCallContext{"", "", "", "n", "t", JSONValue()},
                                DynamicToolCallContext{"", "", "", "n", "t", JSONValue()}));
}

TEST(AppServerTurnRunToolCalls, TellTheModelWhatTheToolGave) {
  const ThreadOptions options = withTools({toolNamed("t", {}, [](DynamicToolCallContext) -> Task<DynamicToolResult> {
    DynamicToolResult result;
    result.contentItems.push_back(DynamicToolCallOutputContentItem::inputText("ü\n"));
    result.contentItems.push_back(DynamicToolCallOutputContentItem::inputImage("data:x"));
    result.success = true;
    co_return result;
  })});
  EXPECT_EQ(resultOf(call, R"({"tool":"t"})", options),
            json(R"({"contentItems":[{"type":"inputText","text":"ü\n"},{"type":"inputImage","imageUrl":"data:x"}],
                     "success":true})"));
}

TEST(AppServerTurnRunToolCalls, TellTheModelWhyTheToolFailed) {
  const std::pair<Execute, std::string> cases[] = {
      {[](const DynamicToolCallContext&) -> DynamicToolResult { throw std::runtime_error("no network"); },
       "no network"},
      {[](DynamicToolCallContext) -> Task<DynamicToolResult> {
         throw ThreadRunError::streamError("said");
         co_return DynamicToolResult();
       },
       "said"},
      {[](const DynamicToolCallContext&) -> DynamicToolResult { throw 7; }, "Unknown failure"},
      {[](const DynamicToolCallContext&) -> DynamicToolResult { throw CancelledError(); }, CancelledError().what()},
  };
  for (const auto& [execute, text] : cases) {
    EXPECT_EQ(resultOf(call, R"({"tool":"t"})", withTools({toolNamed("t", {}, execute)})), said(text, false));
  }
}

ThreadOptions refreshing(const ParlaneAuthTokensRefreshResponse& response, ParlaneAuthTokensRefreshRequest& seen) {
  ThreadOptions options;
  options.parlaneAuthTokensRefreshHandler = [response, &seen](const ParlaneAuthTokensRefreshRequest& request) {
    seen = request;
    return response;
  };
  return options;
}

TEST(AppServerTurnRunTokenRefresh, GivesTheTokensThatTheHandlerHas) {
  ParlaneAuthTokensRefreshRequest seen;
  EXPECT_EQ(resultOf(refresh, "{}", refreshing({"secret", "account", "pro"}, seen)),
            json(R"({"accessToken":"secret","parlaneAccountId":"account","parlanePlanType":"pro"})"));
  EXPECT_EQ(resultOf(refresh, "{}", refreshing({"", "", {}}, seen)),
            json(R"({"accessToken":"","parlaneAccountId":"","parlanePlanType":null})"));
}

TEST(AppServerTurnRunTokenRefresh, KnowsOneReasonOnly) {
  for (const char* reason : {R"("unauthorized")", R"("else")", "null", "7"}) {
    ParlaneAuthTokensRefreshRequest seen;
    const std::string params = std::string(R"({"reason":)") + reason + R"(,"previousAccountId":"p"})";
    (void)resultOf(refresh, params, refreshing({}, seen));
    EXPECT_EQ(seen, (ParlaneAuthTokensRefreshRequest{ParlaneAuthTokensRefreshReason::unauthorized, "p"}));
  }
  ParlaneAuthTokensRefreshRequest seen;
  (void)resultOf(refresh, R"({"previousAccountId":7,"previous_account_id":"p"})", refreshing({}, seen));
  EXPECT_EQ(seen.previousAccountID, std::nullopt);
}

TEST(AppServerTurnRunTokenRefresh, CostsTheProcessWhenItFails) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    int calls = 0;
    ThreadOptions options;
    options.parlaneAuthTokensRefreshHandler =
        [&calls](ParlaneAuthTokensRefreshRequest) -> Task<ParlaneAuthTokensRefreshResponse> {
      if (++calls == 1) throw std::runtime_error("signed out");
      ParlaneAuthTokensRefreshResponse response;
      response.accessToken = "secret";
      co_return response;
    };
    AskedRun asked(scheduler, options);
    asked.ask(refresh, "{}");
    EXPECT_THAT(asked.words(), ElementsAre("stream error: Failed handling app-server request: signed out"));
    EXPECT_FALSE(asked.engine.run->transport().hasProcess());
    EXPECT_THAT(asked.answers(), IsEmpty());
    asked.startTurn();
    asked.ask(refresh, "{}");
    EXPECT_EQ(asked.engine.server.started(), 2U);
    EXPECT_EQ(asked.answers().size(), 1U);
  });
}

TEST(AppServerTurnRunAttestation, SendsTheTokenOfTheHandler) {
  ThreadOptions options;
  options.attestationGenerateHandler = [] { return std::string("tök\"en"); };
  EXPECT_EQ(resultOf(attest, R"({"whatever":1})", options), json(R"({"token":"tök\"en"})"));
}

TEST(SyntheticItemID, IsThePrefixAndTheRequest) {
  EXPECT_EQ(detail::syntheticItemID("p", AppServerRequestID::integer(-12)), "p:-12");
  EXPECT_EQ(detail::syntheticItemID("p", AppServerRequestID::string("a:b")), "p:a:b");
}

}  // namespace
