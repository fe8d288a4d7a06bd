#include "OrmelSDK/Management/OneShotPerformer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "OrmelSDK/AppServerRun/Framing/AppServerRPCError.h"
#include "OrmelSDK/Records/ThreadRecords.h"
#include "Support/SimulatedServer.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

std::shared_ptr<detail::OneShotPerformer> performerOf(SimulatedServer& server) {
  return std::make_shared<detail::OneShotPerformer>(server.configuration, server.services());
}

/// A call whose result may be anything.
Task<JSONValue> call(const std::shared_ptr<detail::OneShotPerformer>& performer, const char* method = "a/b") {
  return detail::performFor<JSONValue>(performer, method, std::nullopt);
}

TEST(OneShotCall, StartsAServerAsksItAndStopsIt) {
  withServers([](SimulatedServer& server) {
    server.answer("a/b", R"({"x":1})");
    EXPECT_EQ(server.told(server.start(call(performerOf(server)))), R"({"x":1})");
    EXPECT_THAT(server.methods(), ElementsAre("initialize", "initialized", "a/b"));
    EXPECT_EQ(server.process().terminationSignals(), 1U);
    EXPECT_EQ(server.server.running(), 0U);
  });
}

TEST(OneShotCall, HasAServerOfItsOwn) {
  withServers([](SimulatedServer& server) {
    server.answer("a/b", "1");
    const auto performer = performerOf(server);
    server.end(call(performer));
    server.end(call(performer));
    EXPECT_EQ(server.server.started(), 2U);
    EXPECT_THAT(server.process().methodsRead(), ElementsAre("initialize", "initialized", "a/b"));
    EXPECT_EQ(server.process().linesWritten().back(), R"({"id":2,"method":"a/b"})");
    std::vector<std::shared_ptr<Outcome<JSONValue>>> together;
    for (int count = 0; count < 8; ++count) together.push_back(startOn(server.scheduler, call(performer)));
    server.settle();
    for (const auto& outcome : together) EXPECT_EQ(server.told(outcome), "1");
    EXPECT_EQ(server.server.started(), 10U);
  });
}

TEST(OneShotCall, GoesOnWithoutItsPerformer) {
  withServers([](SimulatedServer& server) {
    server.keep("a/b");
    auto performer = performerOf(server);
    const auto outcome = server.start(call(performer));
    performer.reset();
    server.write("{\"id\":2,\"result\":1}\n");
    EXPECT_EQ(server.told(outcome), "1");
  });
}

/// A call that fails, and how. The process has been told to terminate in every case.
struct FailureRow {
  const char* what;
  std::function<void(SimulatedServer&)> prepare;
  const char* told;
};

TEST(OneShotCall, FailsWithItsMethodInTheTextOfAStreamError) {
  const FailureRow rows[] = {
      {"dies at start",
       [](SimulatedServer& server) {
         server.keep("initialize");
         server.onStart = [](InMemoryProcess& process) {
           process.writeError("no licence");
           process.exit(1);
         };
       },
       "stream error: App-server RPC thread/read failed: no licence"},
      {"dies in the handshake", [](SimulatedServer& server) { server.exit("initialize"); },
       "stream error: App-server RPC thread/read failed: Ormel app-server terminated unexpectedly"},
      {"dies at the request", [](SimulatedServer& server) { server.exit("thread/read", "panicked"); },
       "stream error: App-server RPC thread/read failed: panicked"},
      {"breaks the protocol",
       [](SimulatedServer& server) {
         server.reply("thread/read", [](InMemoryProcess& process, const JSONValue&) { process.write("7\n"); });
       },
       "stream error: App-server RPC thread/read failed: Unexpected non-object JSON from app-server"},
      {"leaves out the record's member", [](SimulatedServer& server) { server.answer("thread/read", "{}"); },
       "stream error: App-server RPC thread/read failed: App-server decode error at $: missing key 'thread': "
       "No value is associated with the key 'thread'."},
      {"leaves out a nested member", [](SimulatedServer& server) { server.answer("thread/read", R"({"thread":{}})"); },
       "stream error: App-server RPC thread/read failed: App-server decode error at thread: missing key 'id': "
       "No value is associated with the key 'id'."},
      {"refuses",
       [](SimulatedServer& server) { server.refuse("thread/read", R"({"code":-32601,"message":"unknown"})"); },
       "other error: App-server error -32601: unknown"},
      {"refuses the handshake",
       [](SimulatedServer& server) { server.refuse("initialize", R"({"code":1,"message":"not today"})"); },
       "other error: App-server error 1: not today"},
      {"is refused by the config",
       [](SimulatedServer& server) {
         server.configuration.ormelOptions.config.emplace().emplace("", OrmelConfigValue(1));
       },
       "process error: Ormel config override keys must be non-empty strings"},
  };
  for (const FailureRow& row : rows) {
    SCOPED_TRACE(row.what);
    withServers([&](SimulatedServer& server) {
      row.prepare(server);
      const auto outcome =
          startOn(server.scheduler, detail::performFor<ThreadReadResponse>(performerOf(server), "thread/read", {}));
      server.pass(1s);
      ASSERT_TRUE(outcome->isSet());
      EXPECT_EQ(failureOf([&] { outcome->take(); }), row.told);
      EXPECT_EQ(server.server.running(), 0U);
    });
  }
}

TEST(OneShotCall, TellsOfACancellationAtEveryWait) {
  // After so many pieces of work the call is cancelled; in the end it was sooner done.
  for (const bool isVetted : {false, true}) {
    std::size_t cancellations = 0;
    for (std::size_t steps = 0; steps < 60; ++steps) {
      SCOPED_TRACE(steps);
      SimulatedScheduler scheduler(steps);
      SimulatedServer server(scheduler);
      if (isVetted) {
        server.configuration.ormelOptions.executableTrustAssessment = [](const std::string&) {
          return OrmelExecutableTrustAssessment::trusted();
        };
      }
      server.answer("a/b", "1");
      std::stop_source stop;
      const auto outcome = startOn(scheduler, call(performerOf(server)), stop.get_token());
      for (std::size_t step = 0; step < steps; ++step) scheduler.step();
      stop.request_stop();
      server.settle();
      const std::string told = server.told(outcome);
      if (told != "1") {
        EXPECT_EQ(told, "stream error: App-server RPC a/b was cancelled");
        ++cancellations;
      }
      EXPECT_EQ(server.server.running(), 0U);
    }
    EXPECT_GT(cancellations, 5U);
    EXPECT_LT(cancellations, 60U);
  }
}

TEST(OneShotCall, TellsTheServerOtherCapabilitiesIfAsked) {
  withServers([](SimulatedServer& server) {
    server.answer("a/b", "1");
    auto capabilities = AppServerInitializeCapabilities::forManagement();
    capabilities.experimentalAPI = true;
    const auto performer = performerOf(server);
    server.end(call(performer->withCapabilities(capabilities)));
    EXPECT_EQ(*server.process().messagesRead().front().find("params")->find("capabilities"), capabilities.jsonObject());
    server.end(call(performer));
    EXPECT_EQ(*server.process().messagesRead().front().find("params")->find("capabilities"),
              AppServerInitializeCapabilities::forManagement().jsonObject());
  });
}

TEST(OneShotNotification, IsReadByAServerThatMayThenExit) {
  withServers([](SimulatedServer& server) {
    const auto outcome = startOn(
        server.scheduler, detail::OneShotPerformer::performNotification(performerOf(server), "c/d", JSONValue(7)));
    server.pass(1s);
    EXPECT_EQ(server.told(outcome), "no failure");
    EXPECT_THAT(server.methods(), ElementsAre("initialize", "initialized", "c/d"));
    EXPECT_EQ(server.process().linesWritten().back(), R"({"method":"c/d","params":7})");
    EXPECT_EQ(server.process().termination(), (detail::Termination{detail::TerminationReason::exit, 0}));
  });
}

TEST(OneShotNotification, EndsAServerThatDoesNotExit) {
  withServers([](SimulatedServer& server) {
    server.onInputEnd = [](InMemoryProcess&) {};
    const auto outcome =
        startOn(server.scheduler, detail::OneShotPerformer::performNotification(performerOf(server), "c/d", {}));
    server.pass(499ms);
    EXPECT_EQ(server.told(outcome), "waiting");
    server.pass(2ms);
    EXPECT_EQ(server.told(outcome), "no failure");
    EXPECT_EQ(server.server.running(), 0U);
  });
}

TEST(OneShotNotification, FailsWithWhatGoesWrongAsItIs) {
  withServers([](SimulatedServer& server) {
    server.exit("initialize", "no licence");
    const auto dying = detail::OneShotPerformer::performNotification;
    const auto outcome = startOn(server.scheduler, dying(performerOf(server), "c/d", {}));
    server.pass(1s);
    EXPECT_EQ(server.told(outcome), "stream error: no licence");
    server.keep("initialize");
    std::stop_source stop;
    const auto cancelled = server.start(dying(performerOf(server), "c/d", {}), stop.get_token());
    stop.request_stop();
    server.settle();
    EXPECT_EQ(server.told(cancelled), "cancelled");
    EXPECT_EQ(server.server.running(), 0U);
  });
}

}  // namespace
