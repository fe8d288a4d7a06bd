#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <string>
#include <vector>

#include "Support/SimulatedServer.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using namespace std::chrono_literals;
using ::testing::ElementsAre;

Task<void> beginAnew(std::shared_ptr<detail::AppServerRPCClient> client) {
  co_await client->strand().enter();
  co_await client->terminate();
  co_await client->startProcess();
  co_await client->initializeIfNeeded();
}

TEST(AppServerRPCClientEnd, FailsWhatIsInFlight) {
  withServers([](SimulatedServer& server) {
    const auto client = server.readyClient();
    const auto first = server.start(client->sendRequest("a/b"));
    const auto second = server.start(client->sendRequest("a/b"));
    server.process().exit(0);
    server.pass(1s);
    EXPECT_EQ(server.told(first), unexpectedEnd);
    EXPECT_EQ(server.told(second), unexpectedEnd);
    EXPECT_FALSE(client->hasProcess());
  });
}

TEST(AppServerRPCClientEnd, IsToldByTheTrimmedWordsOfAllProcesses) {
  withServers([](SimulatedServer& server) {
    server.exit("a/b", " panicked\n\n");
    const auto client = server.readyClient();
    const auto first = server.start(client->sendRequest("a/b"));
    server.pass(1s);
    EXPECT_EQ(server.told(first), "stream error: panicked");
    server.exit("a/b", "again\n");
    server.end(client->startProcess());
    server.end(client->initializeIfNeeded());
    const auto second = server.start(client->sendRequest("a/b"));
    server.pass(1s);
    EXPECT_EQ(server.told(second), "stream error: panicked\n\nagain");
  });
}

TEST(AppServerRPCClientEnd, WaitsALittleForLastWordsThatComeAfterTheEndOfTheOutput) {
  withServers([](SimulatedServer& server) {
    server.onStart = [](InMemoryProcess& process) { process.slowErrorOutput(5ms); };
    server.exit("a/b", "late words");
    const auto client = server.readyClient();
    const auto answer = server.start(client->sendRequest("a/b"));
    server.pass(1s);
    EXPECT_EQ(server.told(answer), "stream error: late words");
  });
}

TEST(AppServerRPCClientEnd, DoesNotWaitForWordsOnAPipeThatSomebodyElseHolds) {
  withServers([](SimulatedServer& server) {
    const auto client = server.readyClient();
    const auto answer = server.start(client->sendRequest("a/b"));
    server.process().closeOutput();
    server.pass(200ms);
    EXPECT_EQ(server.told(answer), unexpectedEnd);
    EXPECT_FALSE(client->hasProcess());
    EXPECT_EQ(server.server.running(), 0U);
  });
}

TEST(AppServerRPCClientEnd, OfAConnectionThatWasClosedMeanwhileCostsTheNextOneNothing) {
  constexpr std::uint64_t orders = 300;
  underSeeds(orders, [](SimulatedScheduler& scheduler) {
    SimulatedServer server(scheduler);
    server.onStart = [](InMemoryProcess& process) { process.slowErrorOutput(5ms); };
    const auto client = server.readyClient();
    const auto first = server.start(client->sendRequest("a/b"));
    server.process().writeError("last words");
    server.process().closeOutput();
    // The last words, which the end of the output waits for, come in the moment in which the client begins anew.
    std::shared_ptr<Outcome<void>> beginning;
    const Timer timer =
        scheduler.postAfter(5ms, [&] { beginning = startOn(scheduler, beginAnew(client)); }, "application");
    server.pass(5ms);
    EXPECT_EQ(server.told(beginning), "no failure");
    EXPECT_NE(server.told(first), "waiting");
    const auto second = server.start(client->sendRequest("a/b"));
    server.pass(1s);
    EXPECT_EQ(server.told(second), "waiting");
    server.end(client->terminate());
  });
}

TEST(AppServerRPCClientEnd, ComesAfterALastLineWithoutALineFeed) {
  withServers([](SimulatedServer& server) {
    server.reply("a/b", [](InMemoryProcess& process, const JSONValue&) {
      process.write("{\"id\":2,\"result\":\"last\"}");
      process.exit(0);
    });
    const auto client = server.readyClient();
    EXPECT_EQ(server.told(server.start(client->sendRequest("a/b"))), "\"last\"");
    server.pass(1s);
    EXPECT_FALSE(client->hasProcess());
  });
}

TEST(AppServerRPCClientEnd, OfTheOutputTellsAlsoWhenAWriteFindsNobody) {
  withServers([](SimulatedServer& server) {
    const auto client = server.readyClient();
    server.process().breakInput();
    const auto answer = server.start(client->sendRequest("a/b"));
    EXPECT_EQ(server.told(answer), "waiting");
    server.process().exit(1);
    server.pass(1s);
    EXPECT_EQ(server.told(answer), unexpectedEnd);
  });
}

TEST(AppServerRPCClientCancellation, ReleasesTheCallerAloneAndDropsTheLateAnswer) {
  withServers([](SimulatedServer& server) {
    const auto client = server.readyClient();
    std::stop_source stop;
    const auto cancelled = server.start(client->sendRequest("a/b"), stop.get_token());
    const auto other = server.start(client->sendRequest("a/b"));
    stop.request_stop();
    server.settle();
    EXPECT_EQ(server.told(cancelled), "cancelled");
    EXPECT_EQ(client->requestsInFlight(), 1U);
    const std::size_t written = server.process().linesWritten().size();
    server.write("{\"id\":2,\"result\":1}\n{\"id\":3,\"result\":2}\n");
    EXPECT_EQ(server.told(other), "2");
    EXPECT_EQ(server.process().linesWritten().size(), written);
    EXPECT_TRUE(client->hasProcess());
  });
}

TEST(AppServerRPCClientCancellation, BeforeARequestWritesNothingButTakesItsId) {
  withServers([](SimulatedServer& server) {
    const auto client = server.readyClient();
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(server.told(server.start(client->sendRequest("a/b"), stop.get_token())), "cancelled");
    EXPECT_EQ(server.process().linesWritten().size(), 2U);
    server.answer("a/b", "1");
    EXPECT_EQ(server.told(server.start(client->sendRequest("a/b"))), "1");
    EXPECT_EQ(server.process().linesWritten().back(), R"({"id":3,"method":"a/b"})");
  });
}

TEST(AppServerRPCClientTermination, FailsWhatIsInFlightAndEndsTheNotifications) {
  withServers([](SimulatedServer& server) {
    const auto client = server.readyClient();
    auto told = client->takeNotificationStream();
    server.notify("n");
    const auto answer = server.start(client->sendRequest("a/b"));
    server.end(client->terminate());
    EXPECT_EQ(server.told(answer), clientTerminated);
    EXPECT_FALSE(client->hasProcess());
    EXPECT_EQ(server.server.running(), 0U);
    EXPECT_EQ(told.nextBlocking()->method, "n");
    EXPECT_EQ(told.nextBlocking(), std::nullopt);
  });
}

TEST(AppServerRPCClientTermination, CanBeRepeatedAndComeBeforeAnything) {
  withServers([](SimulatedServer& server) {
    const auto client = server.newClient();
    server.end(client->terminate());
    server.end(client->terminate());
    EXPECT_EQ(server.server.launchesTried(), 0U);
    // It can be started again, though its notifications have ended.
    server.end(client->startProcess());
    server.end(client->initializeIfNeeded());
    EXPECT_TRUE(client->didInitializeProcess());
    server.end(client->terminate());
  });
}

TEST(AppServerRPCClientTermination, InTheHandshakeFailsThoseWhoWaitForIt) {
  withServers([](SimulatedServer& server) {
    server.keep("initialize");
    const auto client = server.newClient();
    server.end(client->startProcess());
    const auto first = server.start(client->initializeIfNeeded());
    const auto second = server.start(client->initializeIfNeeded());
    server.end(client->terminate());
    EXPECT_EQ(server.told(first), clientTerminated);
    EXPECT_EQ(server.told(second), clientTerminated);
  });
}

TEST(AppServerRPCClientTermination, DuringTheAssessmentOfTheExecutableKeepsItFromBeingStarted) {
  withServers([](SimulatedServer& server) {
    server.configuration.ormelOptions.executableTrustAssessment = [](const std::string&) {
      return OrmelExecutableTrustAssessment::trusted();
    };
    const auto client = server.newClient();
    const auto starting = startOn(server.scheduler, client->startProcess());
    const auto terminating = startOn(server.scheduler, client->terminate());
    server.settle();
    EXPECT_EQ(server.told(terminating), "no failure");
    // Terminated before it had begun, it starts afresh.
    const std::string told = server.told(starting);
    EXPECT_EQ(server.server.started(), told == "no failure" ? 1U : 0U);
    EXPECT_THAT(told, ::testing::AnyOf(clientTerminated, "no failure"));
    server.end(client->terminate());
  });
}

TEST(AppServerRPCClientTermination, IsNotKeptByACancelledCaller) {
  withServers([](SimulatedServer& server) {
    const auto client = server.readyClient();
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(server.told(server.start(client->terminate(), stop.get_token())), "no failure");
    EXPECT_EQ(server.server.running(), 0U);
  });
}

TEST(AppServerRPCClientRelease, EndsTheProcess) {
  withServers([](SimulatedServer& server) {
    auto client = server.readyClient();
    auto told = client->takeNotificationStream();
    client.reset();
    server.settle();
    EXPECT_EQ(server.server.running(), 0U);
    EXPECT_EQ(told.nextBlocking(), std::nullopt);
  });
}

TEST(AppServerRPCClientLastNotification, GivesTheServerHalfASecondToActOnIt) {
  struct Row {
    std::chrono::milliseconds exitsAfter;
    std::chrono::milliseconds endsAfter;
    detail::Termination termination;
  };
  constexpr Row rows[] = {
      {0ms, 10ms, {detail::TerminationReason::exit, 0}},
      {95ms, 100ms, {detail::TerminationReason::exit, 0}},
      {10s, 500ms, {detail::TerminationReason::uncaughtSignal, SIGTERM}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.exitsAfter.count());
    withServers([&](SimulatedServer& server) {
      server.onInputEnd = [&](InMemoryProcess& process) {
        process.after(row.exitsAfter, [&process] { process.exit(0); });
      };
      const auto client = server.readyClient();
      server.end(client->sendNotification("c/d"));
      const std::uint64_t before = server.scheduler.now();
      const auto finishing = server.start(client->finishNotifications());
      server.scheduler.runUntil([&] { return finishing->isSet(); });
      EXPECT_EQ(std::chrono::nanoseconds(server.scheduler.now() - before), row.endsAfter);
      EXPECT_EQ(server.process().messagesRead().size(), 3U);
      EXPECT_FALSE(client->hasProcess());
      server.settle();
      EXPECT_EQ(server.process().termination(), row.termination);
      EXPECT_EQ(server.told(server.start(client->sendNotification("c/d"))), stdinIsUnavailable);
    });
  }
}

TEST(AppServerRPCClientLastNotification, DoesNotWaitForACancelledCaller) {
  withServers([](SimulatedServer& server) {
    server.onInputEnd = [](InMemoryProcess&) {};
    const auto client = server.readyClient();
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(server.told(server.start(client->finishNotifications(), stop.get_token())), "no failure");
    EXPECT_EQ(server.process().terminationSignals(), 1U);
  });
}

}  // namespace
