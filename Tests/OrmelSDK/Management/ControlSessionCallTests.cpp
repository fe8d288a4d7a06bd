#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "OrmelSDK/Records/ThreadRecords.h"
#include "Support/SimulatedSession.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(ControlSessionCall, StartsTheServerOnceForAllCalls) {
  withSessions([](SimulatedServer& server, SimulatedSession& session) {
    server.answer("a/b", "1");
    EXPECT_EQ(server.server.launchesTried(), 0U);
    EXPECT_EQ(session.ended(), "1");
    EXPECT_EQ(session.ended(), "1");
    EXPECT_EQ(server.server.started(), 1U);
    EXPECT_THAT(server.methods(), ElementsAre("initialize", "initialized", "a/b", "a/b"));
    EXPECT_EQ(*server.process().messagesRead().front().find("params")->find("capabilities"),
              AppServerInitializeCapabilities::forManagement().jsonObject());
  });
}

TEST(ControlSessionCall, GoesSideBySideWithOthersOverOneHandshake) {
  withSessions([](SimulatedServer& server, SimulatedSession& session) {
    server.reply("a/b", [](InMemoryProcess& process, const JSONValue& request) {
      process.answer(request, *request.find("params"));
    });
    std::vector<std::shared_ptr<Outcome<JSONValue>>> calls;
    for (int number = 0; number < 8; ++number) {
      calls.push_back(startOn(server.scheduler, session.call("a/b", JSONValue(number))));
    }
    server.settle();
    for (std::size_t number = 0; number < calls.size(); ++number) {
      EXPECT_EQ(server.told(calls[number]), std::to_string(number));
    }
    EXPECT_EQ(server.server.started(), 1U);
    EXPECT_EQ(server.methods().size(), 10U);
  });
}

/// A failure of a call, which comes as it is and costs the client.
struct SessionFailureRow {
  const char* what;
  std::function<void(SimulatedServer&)> prepare;
  std::function<void(SimulatedServer&)> repair;
  const char* told;
};

TEST(ControlSessionCall, GivesUpTheClientByAnyFailureAndStartsAfresh) {
  const auto nothing = [](SimulatedServer&) {};
  const SessionFailureRow rows[] = {
      {"refuses",
       [](SimulatedServer& server) { server.refuse("thread/read", R"({"code":-32601,"message":"unknown"})"); }, nothing,
       "other error: App-server error -32601: unknown"},
      {"answers with another record", [](SimulatedServer& server) { server.answer("thread/read", "[]"); }, nothing,
       "stream error: App-server decode error at $: type mismatch for ThreadReadResponse: "
       "Expected ThreadReadResponse but found an array."},
      {"breaks the protocol",
       [](SimulatedServer& server) {
         server.reply("thread/read", [](InMemoryProcess& process, const JSONValue&) { process.write("7\n"); });
       },
       nothing, "stream error: Unexpected non-object JSON from app-server"},
      {"dies", [](SimulatedServer& server) { server.exit("thread/read", "panicked"); }, nothing,
       "stream error: panicked"},
      {"refuses the handshake",
       [](SimulatedServer& server) { server.refuse("initialize", R"({"code":1,"message":"not today"})"); },
       [](SimulatedServer& server) { server.answer("initialize", "{}"); },
       "other error: App-server error 1: not today"},
      {"dies in the handshake", [](SimulatedServer& server) { server.exit("initialize"); },
       [](SimulatedServer& server) { server.answer("initialize", "{}"); }, unexpectedEnd},
      {"cannot be started", [](SimulatedServer& server) { server.server.failLaunches(1); }, nothing, nullptr},
  };
  for (const SessionFailureRow& row : rows) {
    SCOPED_TRACE(row.what);
    withSessions([&](SimulatedServer& server, SimulatedSession& session) {
      row.prepare(server);
      const auto heard = session.listen();
      const auto outcome =
          startOn(server.scheduler, detail::performFor<ThreadReadResponse>(session.session, "thread/read", {}));
      server.pass(1s);
      ASSERT_TRUE(outcome->isSet());
      const std::string told = failureOf([&] { outcome->take(); });
      if (row.told) {
        EXPECT_EQ(told, row.told);
      } else {
        EXPECT_THAT(told, ::testing::StartsWith("process error: "));
      }
      EXPECT_EQ(session.session->client(), nullptr);
      EXPECT_EQ(server.server.running(), 0U);
      const std::size_t before = server.server.started();
      row.repair(server);
      server.answer("a/b", "1");
      EXPECT_EQ(session.ended(), "1");
      EXPECT_EQ(server.server.started(), before + 1);
      // The subscription has outlived the client.
      server.notify("n");
      EXPECT_THAT(*heard, ElementsAre("n"));
    });
  }
}

TEST(ControlSessionCall, GivesUpTheClientWhenItIsCancelled) {
  withSessions([](SimulatedServer& server, SimulatedSession& session) {
    std::stop_source stop;
    const auto cancelled = server.start(session.call("keep"), stop.get_token());
    const auto other = server.start(session.call("keep"));
    stop.request_stop();
    server.settle();
    EXPECT_EQ(server.told(cancelled), "cancelled");
    EXPECT_EQ(server.told(other), clientTerminated);
    EXPECT_EQ(session.session->client(), nullptr);
    EXPECT_EQ(server.process().terminationSignals(), 1U);
  });
}

TEST(ControlSessionCall, IsCancelledAtEveryWait) {
  std::size_t cancellations = 0;
  for (std::size_t steps = 0; steps < 60; ++steps) {
    SCOPED_TRACE(steps);
    SimulatedScheduler scheduler(steps);
    SimulatedServer server(scheduler);
    server.configuration.ormelOptions.executableTrustAssessment = [](const std::string&) {
      return OrmelExecutableTrustAssessment::trusted();
    };
    const SimulatedSession session(server);
    server.answer("a/b", "1");
    std::stop_source stop;
    const auto outcome = startOn(scheduler, session.call(), stop.get_token());
    for (std::size_t step = 0; step < steps; ++step) scheduler.step();
    stop.request_stop();
    server.settle();
    const std::string told = server.told(outcome);
    if (told != "1") {
      EXPECT_EQ(told, "cancelled");
      EXPECT_EQ(session.session->client(), nullptr);
      EXPECT_EQ(server.server.running(), 0U);
      ++cancellations;
    }
  }
  EXPECT_GT(cancellations, 5U);
  EXPECT_LT(cancellations, 60U);
}

TEST(ControlSessionCall, ThatFailsBesideAnotherTerminatesTheClientOnce) {
  withSessions([](SimulatedServer& server, SimulatedSession& session) {
    server.refuse("a/b", R"({"code":1,"message":"no"})");
    const auto first = startOn(server.scheduler, session.call());
    const auto second = startOn(server.scheduler, session.call());
    server.settle();
    for (const auto& outcome : {first, second}) {
      EXPECT_THAT(server.told(outcome), ::testing::AnyOf("other error: App-server error 1: no", clientTerminated));
    }
    EXPECT_EQ(session.session->client(), nullptr);
    EXPECT_EQ(server.server.started(), 1U);
    EXPECT_EQ(server.process().terminationSignals(), 1U);
  });
}

// The second failure arrives when the session has a new client already.
TEST(ControlSessionCall, ThatFailsLateLeavesTheNextClientAlone) {
  withSessions([](SimulatedServer& server, SimulatedSession& session) {
    server.answer("fine", "1");
    server.refuse("refused", R"({"code":1,"message":"no"})");
    const auto late = startOn(server.scheduler, session.call("keep"));
    const auto refused = startOn(server.scheduler, session.call("refused"));
    // As soon as the client is given up, another call takes the next one.
    server.scheduler.runUntil([&] { return refused->isSet() || late->isSet(); });
    const auto next = startOn(server.scheduler, session.call("fine"));
    server.settle();
    EXPECT_EQ(server.told(late), clientTerminated);
    EXPECT_EQ(server.told(next), "1");
    EXPECT_NE(session.session->client(), nullptr);
    EXPECT_EQ(server.server.started(), 2U);
    EXPECT_EQ(server.server.running(), 1U);
    EXPECT_EQ(session.ended("fine"), "1");
    EXPECT_EQ(server.server.started(), 2U);
  });
}

TEST(ControlSessionCall, ReplacesAProcessThatEndedBetweenCallsUnderTheSameClient) {
  withSessions([](SimulatedServer& server, SimulatedSession& session) {
    server.answer("a/b", "1");
    const auto heard = session.listen();
    EXPECT_EQ(session.ended(), "1");
    const auto client = session.session->client();
    server.process().exit(0);
    server.settle();
    EXPECT_FALSE(client->hasProcess());
    EXPECT_EQ(session.ended(), "1");
    EXPECT_EQ(session.session->client(), client);
    EXPECT_EQ(server.server.started(), 2U);
    EXPECT_THAT(server.process().methodsRead(), ElementsAre("initialize", "initialized", "a/b"));
    server.notify("n");
    EXPECT_THAT(*heard, ElementsAre("n"));
  });
}

TEST(ControlSessionCall, UnderWayKeepsTheSessionThatNobodyHoldsAnyMore) {
  withServers([](SimulatedServer& server) {
    SimulatedSession session(server);
    const auto outcome = server.start(session.call("keep"));
    session.session.reset();
    server.settle();
    EXPECT_EQ(server.told(outcome), "waiting");
    server.write("{\"id\":2,\"result\":1}\n");
    EXPECT_EQ(server.told(outcome), "1");
    EXPECT_EQ(server.server.running(), 0U);
  });
}

TEST(ControlSessionClose, OfAnUnusedSessionDoesNothing) {
  withSessions([](SimulatedServer& server, SimulatedSession& session) {
    server.answer("a/b", "1");
    session.close();
    session.close();
    EXPECT_EQ(server.server.launchesTried(), 0U);
    EXPECT_EQ(session.ended(), "1");
  });
}

TEST(ControlSessionClose, FailsTheCallsUnderWayAndLeavesTheSessionUsable) {
  withSessions([](SimulatedServer& server, SimulatedSession& session) {
    const auto outcome = server.start(session.call("keep"));
    session.close();
    EXPECT_EQ(server.told(outcome), clientTerminated);
    EXPECT_EQ(server.server.running(), 0U);
    server.answer("a/b", "1");
    EXPECT_EQ(session.ended(), "1");
    EXPECT_EQ(server.server.started(), 2U);
  });
}

TEST(ControlSessionClose, IsNotStoppedByTheCancellationOfItsCaller) {
  withSessions([](SimulatedServer& server, SimulatedSession& session) {
    server.answer("a/b", "1");
    session.ended();
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(server.told(server.start(detail::ControlSession::close(session.session), stop.get_token())),
              "no failure");
    EXPECT_EQ(server.server.running(), 0U);
  });
}

TEST(ControlSessionRelease, EndsTheServerAndTheSubscriptions) {
  withServers([](SimulatedServer& server) {
    SimulatedSession session(server);
    server.answer("a/b", "1");
    const auto heard = session.listen();
    session.ended();
    session.session.reset();
    server.settle();
    EXPECT_EQ(server.server.running(), 0U);
    EXPECT_THAT(*heard, ElementsAre("end"));
  });
}

}  // namespace
