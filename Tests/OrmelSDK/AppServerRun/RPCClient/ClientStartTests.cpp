#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "OrmelSDK/Base/OrmelProcessError.h"
#include "Support/SimulatedServer.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

Task<void> beginWhenTheProcessIsGone(std::shared_ptr<detail::AppServerRPCClient> client) {
  co_await client->strand().enter();
  while (client->hasProcess()) co_await client->strand().yield();
  co_await client->startProcess();
  co_await client->initializeIfNeeded();
}

TEST(AppServerRPCClientStart, StartsTheServerThroughTheSystemsStarter) {
  withServers([](SimulatedServer& server) {
    server.configuration.ormelPathDirectories = {"/opt/bin"};
    server.configuration.ormelOptions.env = std::map<std::string, std::string>{{"PATH", "/bin"}};
    const auto client = server.newClient();
    server.end(client->startProcess());
    const auto& settings = server.process().settings();
    EXPECT_EQ(settings.executable, "/usr/bin/env");
    EXPECT_THAT(settings.arguments,
                ElementsAre("/opt/ormel", "app-server", "--listen", "stdio://", "--config", "features.goals=true"));
    EXPECT_THAT(*settings.environment,
                ElementsAre(Pair("ORMEL_INTERNAL_ORIGINATOR_OVERRIDE", "ormel_sdk_ts"), Pair("PATH", "/opt/bin:/bin")));
    EXPECT_THAT(server.process().linesWritten(), IsEmpty());
  });
}

TEST(AppServerRPCClientStart, StartsOneProcessHoweverManyAskForIt) {
  for (const bool isVetted : {false, true}) {
    SCOPED_TRACE(isVetted);
    withServers([&](SimulatedServer& server) {
      if (isVetted) {
        server.configuration.ormelOptions.executableTrustAssessment = [](const std::string&) {
          return OrmelExecutableTrustAssessment::trusted();
        };
      }
      const auto client = server.newClient();
      std::vector<std::shared_ptr<Outcome<void>>> starting;
      for (int caller = 0; caller < 4; ++caller) starting.push_back(startOn(server.scheduler, client->startProcess()));
      server.settle();
      for (const auto& start : starting) EXPECT_EQ(server.told(start), "no failure");
      EXPECT_EQ(server.server.launchesTried(), 1U);
    });
  }
}

TEST(AppServerRPCClientStart, RefusesAnUntrustedExecutableBeforeThereIsAChild) {
  withServers([](SimulatedServer& server) {
    server.configuration.ormelOptions.executableTrustAssessment = [](const std::string&) {
      return OrmelExecutableTrustAssessment::rejected("not ours");
    };
    const auto client = server.newClient();
    EXPECT_EQ(server.told(server.start(client->startProcess())),
              inWords(std::make_exception_ptr(OrmelProcessError::untrustedExecutable("/opt/ormel", "not ours"))));
    EXPECT_EQ(server.server.launchesTried(), 0U);
  });
}

TEST(AppServerRPCClientStart, RefusesAConfigThatHasNoFormBeforeItAssessesAnything) {
  withServers([](SimulatedServer& server) {
    server.configuration.ormelOptions.config.emplace().emplace("", OrmelConfigValue(1));
    server.configuration.ormelOptions.executableTrustAssessment = [](const std::string&) {
      ADD_FAILURE() << "nothing is to be started";
      return OrmelExecutableTrustAssessment::trusted();
    };
    const auto client = server.newClient();
    EXPECT_EQ(server.told(server.start(client->startProcess())),
              "process error: Ormel config override keys must be non-empty strings");
    EXPECT_EQ(server.server.launchesTried(), 0U);
  });
}

TEST(AppServerRPCClientStart, CanBeTriedAgainAfterALaunchThatFailed) {
  withServers([](SimulatedServer& server) {
    server.server.failLaunches(1);
    const auto client = server.newClient();
    EXPECT_THAT(server.told(server.start(client->startProcess())), ::testing::StartsWith("process error: "));
    EXPECT_EQ(server.told(server.start(client->sendRequest("a/b"))), stdinIsUnavailable);
    server.end(client->startProcess());
    server.end(client->initializeIfNeeded());
  });
}

TEST(AppServerRPCClientStart, CanBeTriedAgainAfterAProcessThatItCouldNotRead) {
  withServers([](SimulatedServer& server) {
    server.server.failReads(1);
    const auto client = server.newClient();
    EXPECT_EQ(server.told(server.start(client->startProcess())), "other error: std::bad_alloc");
    EXPECT_EQ(server.told(server.start(client->sendRequest("a/b"))), stdinIsUnavailable);
    server.end(client->startProcess());
    server.end(client->initializeIfNeeded());
    EXPECT_EQ(server.server.running(), 1U);
  });
}

TEST(AppServerRPCClientStart, LeavesACancelledCallerOfALongAssessment) {
  withServers([](SimulatedServer& server) {
    server.configuration.ormelOptions.executableTrustAssessment = [](const std::string&) {
      return OrmelExecutableTrustAssessment::trusted();
    };
    const auto client = server.newClient();
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(server.told(server.start(client->startProcess(), stop.get_token())), "cancelled");
    EXPECT_EQ(server.server.launchesTried(), 0U);
  });
}

TEST(AppServerRPCClientHandshake, SaysWhoTheClientIsAndThatItIsReady) {
  withServers([](SimulatedServer& server) {
    const auto client = server.readyClient();
    EXPECT_THAT(
        server.process().linesWritten(),
        ElementsAre(R"({"id":1,"method":"initialize","params":{)"
                    R"("clientInfo":{"name":"kestrion","title":"Kestrion","version":"0.1.0"},)"
                    R"("capabilities":{"experimentalApi":false,"requestAttestation":false,)"
                    R"("optOutNotificationMethods":["thread/started","turn/started","item/started","item/updated",)"
                    R"("item/completed","item/agentMessage/delta","item/commandExecution/outputDelta",)"
                    R"("thread/tokenUsage/updated","turn/completed"]}}})",
                    R"({"method":"initialized"})"));
    EXPECT_TRUE(client->didInitializeProcess());
  });
}

TEST(AppServerRPCClientHandshake, IsMadeOnceForAProcess) {
  withServers([](SimulatedServer& server) {
    const auto client = server.readyClient();
    server.end(client->initializeIfNeeded());
    server.end(client->startProcess());
    EXPECT_THAT(server.methods(), ElementsAre("initialize", "initialized"));
    EXPECT_EQ(server.server.started(), 1U);
  });
}

TEST(AppServerRPCClientHandshake, IsSharedByThoseWhoNeedItAtOnce) {
  withServers([](SimulatedServer& server) {
    server.keep("initialize");
    const auto client = server.newClient();
    server.end(client->startProcess());
    const auto first = server.start(client->initializeIfNeeded());
    const auto second = server.start(client->initializeIfNeeded());
    EXPECT_EQ(server.told(first), "waiting");
    server.write("{\"id\":1,\"result\":{}}\n");
    EXPECT_EQ(server.told(first), "no failure");
    EXPECT_EQ(server.told(second), "no failure");
    EXPECT_THAT(server.methods(), ElementsAre("initialize", "initialized"));
  });
}

TEST(AppServerRPCClientHandshake, FailsForAllThatWaitAndIsTriedAfreshByTheNext) {
  withServers([](SimulatedServer& server) {
    server.keep("initialize");
    const auto client = server.newClient();
    server.end(client->startProcess());
    const auto first = server.start(client->initializeIfNeeded());
    const auto second = server.start(client->initializeIfNeeded());
    server.write("{\"id\":1,\"error\":{\"code\":7,\"message\":\"not today\"}}\n");
    EXPECT_EQ(server.told(first), "other error: App-server error 7: not today");
    EXPECT_EQ(server.told(second), "other error: App-server error 7: not today");
    EXPECT_FALSE(client->didInitializeProcess());
    server.answer("initialize", "null");
    server.end(client->initializeIfNeeded());
    EXPECT_THAT(server.methods(), ElementsAre("initialize", "initialize", "initialized"));
    EXPECT_EQ(server.server.started(), 1U);
  });
}

TEST(AppServerRPCClientHandshake, FailsWithTheLastWordsOfAServerThatDiesInIt) {
  withServers([](SimulatedServer& server) {
    server.exit("initialize", "no licence\n");
    const auto client = server.newClient();
    server.end(client->startProcess());
    const auto first = server.start(client->initializeIfNeeded());
    const auto second = server.start(client->initializeIfNeeded());
    server.pass(1s);
    EXPECT_EQ(server.told(first), "stream error: no licence");
    EXPECT_THAT(server.told(second), ::testing::AnyOf("stream error: no licence", stdinIsUnavailable));
    EXPECT_FALSE(client->hasProcess());
  });
}

TEST(AppServerRPCClientHandshake, IsMadeAgainWithTheNextProcess) {
  withServers([](SimulatedServer& server) {
    const auto client = server.readyClient();
    server.process().exit(0);
    server.settle();
    EXPECT_FALSE(client->hasProcess());
    EXPECT_FALSE(client->didInitializeProcess());
    EXPECT_EQ(server.told(server.start(client->sendRequest("a/b"))), stdinIsUnavailable);
    server.end(client->startProcess());
    server.end(client->initializeIfNeeded());
    server.answer("a/b", "1");
    EXPECT_EQ(server.told(server.start(client->sendRequest("a/b"))), "1");
    // Ids go on: 1 for the first handshake, 2 for the request that could not be written, 3 and 4 here.
    EXPECT_EQ(server.process().linesWritten().back(), R"({"id":4,"method":"a/b"})");
  });
}

// The answer to the first process's handshake is still on its way to who waits when that process has gone.
TEST(AppServerRPCClientHandshake, OfAProcessThatIsGoneDoesNotCountForTheNext) {
  withServers([](SimulatedServer& server) {
    server.reply("initialize", [](InMemoryProcess& process, const JSONValue& request) {
      process.answer(request, JSONValue::object());
      process.write("[]\n");
    });
    const auto client = server.newClient();
    server.end(client->startProcess());
    const auto first = server.start(client->initializeIfNeeded());
    // It depends on whether both lines come in one read.
    EXPECT_THAT(server.told(first), ::testing::AnyOf(stdinIsUnavailable, "no failure"));
    EXPECT_FALSE(client->didInitializeProcess());
    server.answer("initialize", "{}");
    server.end(client->startProcess());
    server.end(client->initializeIfNeeded());
    EXPECT_TRUE(client->didInitializeProcess());
    EXPECT_THAT(server.process().methodsRead(), ElementsAre("initialize", "initialized"));
  });
}

TEST(AppServerRPCClientHandshake, ThatEndsLateLeavesTheHandshakeOfTheNextProcessAlone) {
  constexpr std::uint64_t orders = 100;
  underSeeds(orders, [](SimulatedScheduler& scheduler) {
    SimulatedServer server(scheduler);
    server.reply("initialize", [&](InMemoryProcess& process, const JSONValue&) {
      // The answer has been taken when the next line costs the process, but its waiter has not run yet.
      process.write(R"({"id":1,"result":{}})"
                    "\nnonsense\n");
      server.keep("initialize");
    });
    const auto client = server.newClient();
    server.end(client->startProcess());
    const auto first = startOn(scheduler, client->initializeIfNeeded());
    const auto next = startOn(scheduler, beginWhenTheProcessIsGone(client));
    server.settle();
    // It depends on whether both lines come in one read.
    EXPECT_THAT(server.told(first), ::testing::AnyOf(stdinIsUnavailable, "no failure"));
    const auto third = server.start(client->initializeIfNeeded());
    EXPECT_THAT(server.process().methodsRead(), ElementsAre("initialize"));
    server.write("{\"id\":2,\"result\":{}}\n");
    EXPECT_EQ(server.told(next), "no failure");
    EXPECT_EQ(server.told(third), "no failure");
    server.end(client->terminate());
  });
}

TEST(AppServerRPCClientHandshake, WithoutAProcessFails) {
  withServers([](SimulatedServer& server) {
    const auto client = server.newClient();
    EXPECT_EQ(server.told(server.start(client->initializeIfNeeded())), stdinIsUnavailable);
    EXPECT_EQ(server.told(server.start(client->initializeIfNeeded())), stdinIsUnavailable);
  });
}

TEST(AppServerRPCClientHandshake, LeavesACancelledCallerAndServesTheOthers) {
  withServers([](SimulatedServer& server) {
    server.keep("initialize");
    const auto client = server.newClient();
    server.end(client->startProcess());
    std::stop_source stop;
    const auto cancelled = server.start(client->initializeIfNeeded(), stop.get_token());
    const auto patient = server.start(client->initializeIfNeeded());
    stop.request_stop();
    server.settle();
    EXPECT_EQ(server.told(cancelled), "cancelled");
    EXPECT_EQ(server.told(patient), "waiting");
    server.write("{\"id\":1,\"result\":{}}\n");
    EXPECT_EQ(server.told(patient), "no failure");
    EXPECT_TRUE(client->didInitializeProcess());
  });
}

TEST(AppServerRPCClientHandshake, EndsWithTheClient) {
  withServers([](SimulatedServer& server) {
    server.keep("initialize");
    auto client = server.newClient();
    server.end(client->startProcess());
    const auto waiting = server.start(client->initializeIfNeeded());
    client.reset();
    server.settle();
    EXPECT_EQ(server.told(waiting), "stream error: App-server RPC client was released during initialization");
    EXPECT_EQ(server.server.running(), 0U);
  });
}

}  // namespace
