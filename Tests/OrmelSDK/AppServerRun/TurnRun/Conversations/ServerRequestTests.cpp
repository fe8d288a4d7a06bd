#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Concurrency/Sleep.h"
#include "Support/TurnRunHarness.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using namespace std::chrono_literals;
using ::testing::ElementsAre;

const std::string runningTurn = politeServer + R"(
client asks turn/start
server answers {"turn": {"id": "u1"}}
)";
constexpr const char* turnEnds =
    R"(server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}
)";

Task<bool> waitedFor(std::shared_ptr<OneShot<bool>> gate) { co_return co_await gate->wait(); }

TEST(AppServerTurnRunRequestsOfAServer, AreAnsweredInTheOrderInWhichHandlersEnd) {
  const auto gate = std::make_shared<OneShot<bool>>();
  TurnRunHarness::Settings settings;
  settings.threadOptions.commandApprovalHandler = [gate](CommandApprovalRequest) -> Task<OrmelApprovalDecision> {
    const bool isAllowed = co_await waitedFor(gate);
    co_return isAllowed ? OrmelApprovalDecision::accept : OrmelApprovalDecision::decline;
  };
  DynamicToolSpec spec;
  spec.name = "draw";
  auto draw = [gate](const DynamicToolCallContext&) {
    gate->resolver().resume(true);
    return DynamicToolResult{{DynamicToolCallOutputContentItem::inputImage("data:x")}, true};
  };
  settings.threadOptions.dynamicTools = std::vector<DynamicTool>{{spec, std::move(draw)}};
  TurnRunHarness server(runningTurn + R"(
    server asks item/commandExecution/requestApproval {"threadId": "t1", "turnId": "u1", "command": "ls"} as first
    server asks foo/bar {} expecting error exactly {"code": -32601, "message": "Method not found: foo/bar"}
    server asks item/permissions/requestApproval {} expecting exactly {"permissions": {}, "scope": "turn"}
    server asks item/tool/call {"tool": "draw", "callId": "c"} as second
    in any order
      client answers second exactly {"contentItems": [{"type": "inputImage", "imageUrl": "data:x"}], "success": true}
      client answers first exactly {"decision": "accept"}
    end
  )" + turnEnds,
                        settings);
  auto turn = server.startTurn();
  EXPECT_THAT(told(turn.events), ElementsAre("thread.started t1", "turn.completed", "end"));
}

TEST(AppServerTurnRunRequestsOfAServer, ForTheUserAreAnsweredByASubmission) {
  TurnRunHarness server(runningTurn + R"(
    server asks item/tool/requestUserInput {"itemId": "i1", "questions": [{"id": "q"}]} with id "question-1"
    client answers exactly {"answers": {"q": {"answers": ["yes"]}}}
  )" + turnEnds);
  auto turn = server.startTurn();
  EXPECT_EQ(nextTold(turn.events), "thread.started t1");
  EXPECT_EQ(nextTold(turn.events), "item.started i1");
  TurnRunHarness::ended(server.run().submitUserInput("i1", {{"q", {"yes"}}}));
  EXPECT_THAT(told(turn.events), ElementsAre("item.completed i1", "turn.completed", "end"));
}

TEST(AppServerTurnRunRequestsOfAServer, ThatDiesAreForgottenAndTheirHandlersToldToStop) {
  // A handler may begin when the test is over.
  struct Counts {
    std::atomic<int> asked{0};
    std::atomic<int> stopped{0};
  };
  const auto counts = std::make_shared<Counts>();
  TurnRunHarness::Settings settings;
  settings.threadOptions.fileChangeApprovalHandler =
      [counts](FileChangeApprovalRequest) -> Task<OrmelApprovalDecision> {
    ++counts->asked;
    try {
      co_await sleepFor(productionScheduler(), 1h);
    } catch (const CancelledError&) {
      ++counts->stopped;
      throw;
    }
    co_return OrmelApprovalDecision::accept;
  };
  TurnRunHarness server("in run 1\n" + runningTurn + R"(
    server asks item/fileChange/requestApproval {"itemId": "f1"}
    server asks item/fileChange/requestApproval {"itemId": "f2"}
    server asks foo/bar {} expecting error {"code": -32601}
    server exits 3
    end
    in run 2
  )" + runningTurn + turnEnds +
                            "end\n",
                        settings);
  auto turn = server.startTurn();
  const auto words = told(turn.events);
  EXPECT_EQ(words.size(), 2U);
  EXPECT_TRUE(eventually([&] { return counts->asked == 2 && counts->stopped == 2; }));
  auto next = server.startTurn();
  EXPECT_THAT(told(next.events), ElementsAre("thread.started t1", "turn.completed", "end"));
}

}  // namespace
