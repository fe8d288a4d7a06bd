#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include "Support/AskedRun.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* approval = "item/commandExecution/requestApproval";

/// An application that takes its time over each approval.
struct SlowApplication {
  struct Question {
    std::string approvalID;
    std::shared_ptr<OneShot<bool>> gate;
    std::stop_token stop;
  };

  /// One that does not listen to cancellation keeps at it.
  explicit SlowApplication(bool listens) {
    options.commandApprovalHandler = [this, listens](CommandApprovalRequest request) -> Task<OrmelApprovalDecision> {
      const auto gate = std::make_shared<OneShot<bool>>();
      Question question;
      question.approvalID = request.approvalID.value_or("");
      question.gate = gate;
      question.stop = co_await currentStopToken();
      questions.push_back(std::move(question));
      Task<bool> waiting = answered(gate);
      if (!listens) waiting = std::move(waiting).withStopToken({});
      const bool isAllowed = co_await std::move(waiting);
      co_return isAllowed ? OrmelApprovalDecision::accept : OrmelApprovalDecision::decline;
    };
  }

  static Task<bool> answered(std::shared_ptr<OneShot<bool>> gate) { co_return co_await gate->wait(); }

  bool decide(std::size_t place, bool isAllowed = true) {
    return questions.at(place).gate->resolver().resume(isAllowed);
  }
  bool isStopped(std::size_t place) const { return questions.at(place).stop.stop_requested(); }

  ThreadOptions options;
  std::vector<Question> questions;
};

/// An event that makes a pending answer worthless.
struct Overtaking {
  const char* name;
  std::function<void(AskedRun&)> happen;
};

const std::vector<Overtaking>& overtakings() {
  static const std::vector<Overtaking> all = {
      {"the turn ends", [](AskedRun& asked) { asked.engine.completeTurn(); }},
      {"the turn fails", [](AskedRun& asked) { asked.engine.write("[]\n"); }},
      {"the server dies", [](AskedRun& asked) { asked.engine.process().endBySignal(9); }},
      {"the server closes its output", [](AskedRun& asked) { asked.engine.process().closeOutput(); }},
      {"the application interrupts", [](AskedRun& asked) { asked.engine.interrupt(); }},
      {"the owner goes away", [](AskedRun& asked) { asked.engine.release(); }},
      {"the server has moved on",
       [](AskedRun& asked) { asked.engine.notify("serverRequest/resolved", R"({"requestId":"q1"})"); }},
      {"another turn has begun",
       [](AskedRun& asked) {
         asked.engine.completeTurn();
         asked.startTurn();
       }},
      {"another process serves another turn",
       [](AskedRun& asked) {
         asked.engine.process().exit(1);
         asked.engine.settle();
         asked.startTurn();
       }},
  };
  return all;
}

TEST(AppServerTurnRunLateAnswers, AreNotWrittenOnceTheyAreOvertaken) {
  for (const bool listens : {true, false}) {
    for (const Overtaking& overtaking : overtakings()) {
      SCOPED_TRACE(std::string(overtaking.name) + (listens ? ", listening" : ", deaf"));
      inManyOrders([&](SimulatedScheduler& scheduler) {
        SlowApplication application(listens);
        AskedRun asked(scheduler, application.options);
        asked.ask(approval, "{}");
        ASSERT_EQ(application.questions.size(), 1U);
        EXPECT_FALSE(application.isStopped(0));
        overtaking.happen(asked);
        asked.engine.settle();
        EXPECT_TRUE(application.isStopped(0));
        EXPECT_EQ(asked.engine.run->serverRequests().count(), 0U);
        EXPECT_EQ(application.decide(0), !listens);
        asked.engine.settle();
        EXPECT_THAT(asked.answers(), IsEmpty());
      });
    }
  }
}

TEST(AppServerTurnRunLateAnswers, AreNotWrittenInTheStepInWhichTheyAreOvertaken) {
  for (const Overtaking& overtaking : overtakings()) {
    SCOPED_TRACE(overtaking.name);
    underSeeds(50, [&](SimulatedScheduler& scheduler) {
      SlowApplication application(false);
      AskedRun asked(scheduler, application.options);
      asked.ask(approval, "{}");
      scheduler.post([&] { application.decide(0); });
      overtaking.happen(asked);
      asked.engine.settle();
      EXPECT_LE(asked.answers().size(), 1U);
      EXPECT_EQ(asked.engine.run->serverRequests().count(), 0U);
    });
  }
}

TEST(AppServerTurnRunLateAnswers, AreNotWrittenForAQuestionThatIsAskedAgain) {
  for (const bool listens : {true, false}) {
    inManyOrders([listens](SimulatedScheduler& scheduler) {
      SlowApplication application(listens);
      AskedRun asked(scheduler, application.options);
      asked.ask(approval, R"({"approvalId":"first"})");
      asked.ask(approval, R"({"approvalId":"second"})");
      ASSERT_EQ(application.questions.size(), 2U);
      EXPECT_TRUE(application.isStopped(0));
      EXPECT_FALSE(application.isStopped(1));
      EXPECT_EQ(asked.engine.run->serverRequests().count(), 1U);
      application.decide(0, true);
      asked.engine.settle();
      EXPECT_THAT(asked.answers(), IsEmpty());
      application.decide(1, false);
      asked.engine.settle();
      EXPECT_EQ(asked.answers(), jsonList({R"({"id":"q1","result":{"decision":"decline"}})"}));
    });
  }
}

TEST(AppServerTurnRunLateAnswers, AreWrittenOnceForEachOfTwoQuestionsUnderOneID) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SlowApplication application(true);
    AskedRun asked(scheduler, application.options);
    asked.ask(approval, "{}");
    application.decide(0, true);
    asked.engine.settle();
    asked.ask(approval, "{}");
    application.decide(1, false);
    asked.engine.settle();
    EXPECT_EQ(asked.answers(), jsonList({R"({"id":"q1","result":{"decision":"accept"}})",
                                         R"({"id":"q1","result":{"decision":"decline"}})"}));
  });
}

TEST(AppServerTurnRunLateAnswers, AreToldFromThoseToANumberAndToItsDigits) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SlowApplication application(true);
    AskedRun asked(scheduler, application.options);
    asked.ask(approval, "{}", 1);
    asked.ask(approval, "{}", "1");
    EXPECT_EQ(asked.engine.run->serverRequests().count(), 2U);
    asked.engine.notify("serverRequest/resolved", R"({"request_id":"1"})");
    EXPECT_FALSE(application.isStopped(0));
    EXPECT_TRUE(application.isStopped(1));
    application.decide(0);
    asked.engine.settle();
    EXPECT_EQ(asked.answers(), jsonList({R"({"id":1,"result":{"decision":"accept"}})"}));
  });
}

TEST(AppServerTurnRunLateAnswers, OutliveARefusalUnderTheirID) {
  SimulatedScheduler scheduler(1);
  SlowApplication application(true);
  AskedRun asked(scheduler, application.options);
  asked.ask(approval, "{}");
  asked.ask("foo/bar", "{}");
  application.decide(0);
  asked.engine.settle();
  EXPECT_EQ(asked.answers(), jsonList({R"({"id":"q1","error":{"code":-32601,"message":"Method not found: foo/bar"}})",
                                       R"({"id":"q1","result":{"decision":"accept"}})"}));
}

TEST(AppServerTurnRunResolvedRequests, AreForgottenWhateverElseIsNamed) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SlowApplication application(true);
    AskedRun asked(scheduler, application.options);
    asked.ask(approval, "{}", 7);
    // A foreign thread's too: ids are the server's, not a turn's.
    asked.engine.notify("serverRequest/resolved", R"({"requestId":true,"request_id":7,"threadId":"t2"})");
    asked.engine.notify("serverRequest/resolved", R"({"requestId":7})");
    asked.engine.notify("serverRequest/resolved", R"({"requestId":"never asked"})");
    EXPECT_TRUE(application.isStopped(0));
    EXPECT_EQ(asked.engine.state(), "pending");
    EXPECT_THAT(asked.answers(), IsEmpty());
  });
}

TEST(AppServerTurnRunHangingHandlers, KeepNoTurnFromItsEnd) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SlowApplication application(false);
    AskedRun asked(scheduler, application.options);
    asked.ask(approval, "{}");
    asked.engine.pass(24h);
    EXPECT_THAT(asked.answers(), IsEmpty());
    // All that hears nothing of the server is the probe, which gets no answer here.
    EXPECT_THAT(asked.words(), ElementsAre("stream error: App-server RPC thread/read timed out after 30 seconds"));
    asked.startTurn();
    asked.engine.completeTurn();
    EXPECT_EQ(asked.words().back(), "end");
    application.decide(0);
    asked.engine.settle();
    EXPECT_THAT(asked.answers(), IsEmpty());
  });
}

TEST(AppServerTurnRunHangingHandlers, MayOutliveTheRun) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SlowApplication application(false);
    std::weak_ptr<detail::AppServerTurnRun> run;
    {
      AskedRun asked(scheduler, application.options);
      asked.ask(approval, "{}");
      run = asked.engine.run;
      asked.engine.run.reset();
      asked.engine.settle();
      EXPECT_TRUE(run.expired());
      EXPECT_TRUE(application.isStopped(0));
      EXPECT_THAT(asked.answers(), IsEmpty());
      application.decide(0);
      asked.engine.settle();
      EXPECT_THAT(asked.answers(), IsEmpty());
    }
  });
}

TEST(AppServerTurnRunRequestsBetweenTurns, AreNotAnsweredNorAddUp) {
  for (const bool isSlow : {true, false}) {
    inManyOrders([isSlow](SimulatedScheduler& scheduler) {
      SlowApplication application(true);
      AskedRun asked(scheduler, isSlow ? application.options : ThreadOptions());
      asked.engine.completeTurn();
      for (int id = 0; id < 100; ++id) asked.ask(approval, "{}", id);
      for (std::size_t place = 0; place < application.questions.size(); ++place) application.decide(place);
      asked.engine.settle();
      EXPECT_THAT(asked.answers(), IsEmpty());
      EXPECT_EQ(asked.engine.run->serverRequests().count(), 0U);
    });
  }
}

TEST(AppServerTurnRunRequestsBetweenTurns, AreCancelledByTheNextTurn) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SlowApplication application(true);
    AskedRun asked(scheduler, application.options);
    asked.engine.completeTurn();
    asked.ask(approval, "{}");
    ASSERT_EQ(application.questions.size(), 1U);
    EXPECT_FALSE(application.isStopped(0));
    asked.startTurn();
    EXPECT_TRUE(application.isStopped(0));
    EXPECT_THAT(asked.answers(), IsEmpty());
  });
}

TEST(AppServerTurnRunRequestsBetweenTurns, ThatCannotBeReadCostNothing) {
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler);
  asked.engine.completeTurn();
  asked.ask("item/tool/call", "{}");
  asked.ask("account/parlaneAuthTokens/refresh", "{}");
  EXPECT_EQ(asked.engine.state(), "finished");
  EXPECT_TRUE(asked.engine.run->transport().hasProcess());
}

TEST(AppServerTurnRunServerRequests, OfAServerThatDiesAtOnceEndTheTurnOnceAndTellNothing) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SlowApplication application(true);
    AskedRun asked(scheduler, application.options);
    asked.engine.process().request("q1", approval, JSONValue::object());
    asked.engine.process().exit(3);
    asked.engine.settle();
    EXPECT_THAT(asked.words(), ElementsAre("stream error: Ormel app-server terminated unexpectedly"));
    EXPECT_THAT(asked.answers(), IsEmpty());
    for (std::size_t place = 0; place < application.questions.size(); ++place) {
      EXPECT_TRUE(application.isStopped(place));
    }
  });
}

TEST(AppServerTurnRunServerRequests, AreAbandonedByAnInterruptOfWhichTheServerStillTells) {
  inManyOrders([](SimulatedScheduler& scheduler) {
    SlowApplication application(true);
    AskedRun asked(scheduler, application.options);
    asked.ask(approval, "{}", 1);
    asked.engine.interrupt();
    EXPECT_TRUE(application.isStopped(0));
    // One that comes while the interrupt is under way is served.
    asked.ask(approval, "{}", 2);
    application.decide(1);
    asked.engine.settle();
    EXPECT_EQ(asked.answers(), jsonList({R"({"id":2,"result":{"decision":"accept"}})"}));
    asked.engine.completeTurn("interrupted");
    EXPECT_THAT(asked.words(), ElementsAre("aborted"));
  });
}

}  // namespace
