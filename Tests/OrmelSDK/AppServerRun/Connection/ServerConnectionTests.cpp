#include "OrmelSDK/AppServerRun/Connection/ServerConnection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include "OrmelSDK/Platform/SystemProcessLauncher.h"
#include "Support/ConcurrencySchedulers.h"
#include "Support/Eventually.h"
#include "Support/InMemoryServer.h"
#include "Support/ProcessResources.h"
#include "Support/RunTranscript.h"
#include "Support/TemporaryDirectory.h"

namespace {

using namespace ormel;
using namespace ormel::detail;
using namespace ormel::testing;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Heard = std::shared_ptr<std::vector<std::string>>;
using Accumulator = std::shared_ptr<AppServerLockedData>;

/// Notes each line, and then how the output ended.
Task<void> noted(ServerOutput output, Heard heard, std::function<void(const std::string&)> onLine = nullptr) {
  try {
    while (co_await output.nextChunk()) {
      while (const auto line = output.nextLine()) {
        heard->emplace_back(*line);
        if (onLine) onLine(heard->back());
      }
    }
    if (const auto lastLine = output.nextLine()) heard->emplace_back(*lastLine);
    heard->emplace_back(output.isClosed() ? "closed" : "end");
  } catch (...) {
    heard->push_back(inWords(std::current_exception()));
  }
}

/// A connection to a process in this program, and what its reader has noted.
struct Connected {
  explicit Connected(SimulatedScheduler& onScheduler, InMemoryServerScript script = InMemoryServerScript(),
                     TerminationHandler onTermination = nullptr)
      : scheduler(onScheduler), server(onScheduler, std::move(script)) {
    connection = ServerConnection::launch(server, LaunchSettings(), accumulator, std::move(onTermination));
  }
  ~Connected() {
    connection.reset();
    scheduler.run();
    EXPECT_EQ(server.running(), 0U);
    EXPECT_EQ(server.held(), 0U);
    EXPECT_EQ(server.read(), 0U);
  }

  void read(std::function<void(const std::string&)> onLine = nullptr) {
    ServerOutput output = connection->read();
    std::stop_token stop = output.stopToken();
    startOn(scheduler, noted(std::move(output), heard, std::move(onLine)), std::move(stop));
    settle();
  }
  void settle() { scheduler.runFor(0ns); }
  InMemoryProcess& process() { return server.lastProcess(); }

  SimulatedScheduler& scheduler;
  InMemoryServer server;
  Accumulator accumulator = std::make_shared<AppServerLockedData>();
  std::unique_ptr<ServerConnection> connection;
  Heard heard = std::make_shared<std::vector<std::string>>();
};

TEST(ServerConnection, GivesTheOutputLineByLine) {
  underSeeds(10, [](SimulatedScheduler& scheduler) {
    Connected connected(scheduler);
    connected.read();
    connected.process().write("one\r\n\ntw");
    connected.settle();
    EXPECT_THAT(*connected.heard, ElementsAre("one"));
    connected.process().write("o\nthree\nlast");
    connected.process().exit(0);
    connected.settle();
    EXPECT_THAT(*connected.heard, ElementsAre("one", "two", "three", "last", "end"));
  });
}

TEST(ServerConnection, GivesNoLineOnceItIsClosed) {
  underSeeds(10, [](SimulatedScheduler& scheduler) {
    Connected connected(scheduler);
    connected.read([&connected](const std::string& line) {
      if (line == "bad") connected.connection.reset();
    });
    connected.process().write("good\nbad\nworse\nworst");
    connected.settle();
    EXPECT_THAT(*connected.heard, ElementsAre("good", "bad", "closed"));
  });
}

TEST(ServerConnection, TellsAReaderThatWaitsThatItIsClosed) {
  underSeeds(10, [](SimulatedScheduler& scheduler) {
    Connected connected(scheduler);
    connected.read();
    connected.connection.reset();
    connected.settle();
    EXPECT_THAT(*connected.heard, ElementsAre("closed"));
  });
}

TEST(ServerConnection, LetsItsReaderBeCancelled) {
  underSeeds(10, [](SimulatedScheduler& scheduler) {
    Connected connected(scheduler);
    std::stop_source reader;
    startOn(scheduler, noted(connected.connection->read(), connected.heard), reader.get_token());
    connected.settle();
    reader.request_stop();
    connected.settle();
    EXPECT_THAT(*connected.heard, ElementsAre("cancelled"));
  });
}

TEST(ServerConnection, WritesEachMessageAsALine) {
  underSeeds(10, [](SimulatedScheduler& scheduler) {
    Connected connected(scheduler);
    connected.connection->write(JSONValue::object({{"text", "a\nb"}}));
    writePayload(connected.connection.get(), JSONValue::object({{"id", 2}}));
    EXPECT_THAT(connected.process().linesWritten(), ElementsAre(R"({"text":"a\nb"})", R"({"id":2})"));
  });
}

TEST(ServerConnection, RefusesToWriteBehindTheEndOfTheInput) {
  underSeeds(10, [](SimulatedScheduler& scheduler) {
    Connected connected(scheduler);
    connected.connection->write(JSONValue::object({{"id", 1}}));
    connected.connection->closeInput();
    EXPECT_EQ(failureOf([&] { connected.connection->write(JSONValue::object({{"id", 2}})); }),
              "stream error: Ormel app-server stdin is unavailable");
    EXPECT_TRUE(connected.connection->isRunning());
    connected.settle();
    EXPECT_FALSE(connected.connection->isRunning());
    EXPECT_THAT(connected.process().linesWritten(), ElementsAre(R"({"id":1})"));
    EXPECT_EQ(connected.process().termination(), (Termination{TerminationReason::exit, 0}));
  });
}

TEST(ServerConnection, RefusesToWriteWhenThereIsNone) {
  EXPECT_EQ(failureOf([] { writePayload(nullptr, JSONValue::object({})); }),
            "stream error: Ormel app-server stdin is unavailable");
}

TEST(ServerConnection, FailsToWriteAValueThatHasNoText) {
  SimulatedScheduler scheduler(1);
  Connected connected(scheduler);
  EXPECT_THROW(connected.connection->write(JSONValue::object({{"number", JSONValue(0.0 / 0.0)}})), std::exception);
  EXPECT_THAT(connected.process().linesWritten(), IsEmpty());
}

TEST(ServerConnection, DoesNotFailWhenTheProcessDoesNotReadAnyMore) {
  SimulatedScheduler scheduler(1);
  Connected connected(scheduler);
  connected.process().breakInput();
  connected.connection->write(JSONValue::object({{"id", 1}}));
  connected.process().exit(0);
  connected.settle();
  connected.connection->write(JSONValue::object({{"id", 2}}));
}

TEST(ServerConnection, SignalsAProcessThatStillRunsWhenItIsClosed) {
  for (const bool hasEnded : {false, true}) {
    underSeeds(10, [hasEnded](SimulatedScheduler& scheduler) {
      Connected connected(scheduler);
      connected.read();
      if (hasEnded) connected.process().exit(0);
      connected.settle();
      connected.connection.reset();
      connected.settle();
      EXPECT_EQ(connected.process().terminationSignals(), hasEnded ? 0U : 1U);
    });
  }
}

TEST(ServerConnection, TellsHowTheProcessEnded) {
  underSeeds(10, [](SimulatedScheduler& scheduler) {
    std::vector<Termination> told;
    Connected connected(scheduler, InMemoryServerScript(), [&told](const Termination& end) { told.push_back(end); });
    connected.process().exit(3);
    connected.settle();
    EXPECT_THAT(told, ElementsAre(Termination{TerminationReason::exit, 3}));
  });
}

TEST(ServerConnection, TellsWhyAProcessCannotBeStarted) {
  SimulatedScheduler scheduler(1);
  InMemoryServer server(scheduler);
  server.failLaunches(1);
  LaunchSettings settings;
  settings.executable = "/no/such";
  const auto launch = [&] { ServerConnection::launch(server, settings, std::make_shared<AppServerLockedData>()); };
  const std::string failure = failureOf(launch);
  EXPECT_TRUE(failure.starts_with("process error: ")) << failure;
  EXPECT_NE(failure.find("/no/such"), std::string::npos) << failure;
  EXPECT_EQ(server.started(), 0U);
}

TEST(ServerConnection, AddsTheStandardErrorOfSeveralProcessesToOneAccumulator) {
  underSeeds(10, [](SimulatedScheduler& scheduler) {
    InMemoryServer server(scheduler);
    const auto accumulator = std::make_shared<AppServerLockedData>();
    for (const char* const words : {"first\n", "second\n"}) {
      const auto connection = ServerConnection::launch(server, LaunchSettings(), accumulator);
      server.lastProcess().writeError(words);
      scheduler.runFor(0ns);
    }
    scheduler.run();
    EXPECT_EQ(accumulator->string(), "first\nsecond\n");
  });
}

TEST(ServerConnection, TellsItsCallbacksOfEachReadBeforeTheReader) {
  underSeeds(10, [](SimulatedScheduler& scheduler) {
    Connected connected(scheduler);
    AppServerOutputChunkCallbacks callbacks;
    callbacks.onChunkEnqueued = [&] { connected.heard->emplace_back("[chunk]"); };
    callbacks.onEOF = [&] { connected.heard->emplace_back("[end of file]"); };
    startOn(scheduler, noted(connected.connection->read(std::move(callbacks)), connected.heard));
    connected.settle();
    connected.process().write("line\n");
    connected.settle();
    connected.process().closeOutput();
    connected.settle();
    // The line may have come in several chunks.
    connected.heard->erase(std::unique(connected.heard->begin(), connected.heard->end()), connected.heard->end());
    EXPECT_THAT(*connected.heard, ElementsAre("[chunk]", "line", "[end of file]", "end"));
  });
}

TEST(VetServerExecutable, AsksAsBlockingWorkAndFailsWithTheReason) {
  SimulatedScheduler scheduler(1);
  InMemoryBlockingWork blockingWork(scheduler);
  OrmelOptions options;
  bool isTrusted = false;
  std::size_t asked = 0;
  options.executableTrustAssessment = [&](const std::string& path) {
    ++asked;
    EXPECT_EQ(path, "/opt/ormel");
    return isTrusted ? OrmelExecutableTrustAssessment::trusted() : OrmelExecutableTrustAssessment::rejected("not ours");
  };
  const auto vet = [&] {
    const auto outcome = startOn(scheduler, vetServerExecutable(blockingWork, "/opt/ormel", options));
    scheduler.run();
    outcome->take();
  };
  EXPECT_EQ(failureOf(vet),
            inWords(std::make_exception_ptr(OrmelProcessError::untrustedExecutable("/opt/ormel", "not ours"))));
  isTrusted = true;
  EXPECT_EQ(failureOf(vet), "no failure");
  EXPECT_EQ(asked, 2U);
}

/// Blocking work that must not be asked for.
class NoBlockingWork final : public BlockingWork {
 public:
  void run(UniqueFunction<void()> /*work*/) override { ADD_FAILURE() << "nothing is to be assessed"; }
};

TEST(VetServerExecutable, DoesNotAskWhenTheCallerChoseTheExecutable) {
  NoBlockingWork blockingWork;
  OrmelOptions options;
  options.selectedOrmelPathOverride = true;
  Simulated().run(vetServerExecutable(blockingWork, "/opt/ormel", options));
}

TEST(VetServerExecutable, RefusesAChosenPathThatTheStarterWouldTakeForSomethingElse) {
  NoBlockingWork blockingWork;
  OrmelOptions options;
  options.selectedOrmelPathOverride = true;
  EXPECT_EQ(
      failureOf([&] { Simulated().run(vetServerExecutable(blockingWork, "/opt/a=b/ormel", options)); }),
      "process error: The server executable \"/opt/a=b/ormel\" cannot be started: a path with \"=\" in it would be "
      "taken for a variable of the environment");
}

TEST(ServerLaunchSettings, GiveTheExecutableToTheSystemsStarter) {
  OrmelOptions options;
  options.env = std::map<std::string, std::string>{{"PATH", "/bin"}};
  const LaunchSettings settings = serverLaunchSettings("/opt/ormel", {"/opt/tools"}, options);
  EXPECT_EQ(settings.executable, "/usr/bin/env");
  EXPECT_THAT(settings.arguments,
              ElementsAre("/opt/ormel", "app-server", "--listen", "stdio://", "--config", "features.goals=true"));
  EXPECT_EQ(settings.environment->at("PATH"), "/opt/tools:/bin");
}

TEST(ServerLaunchSettings, FailWithAConfigOverrideThatHasNoForm) {
  OrmelOptions options;
  options.config.emplace();
  options.config->emplace("", OrmelConfigValue("x"));
  EXPECT_EQ(failureOf([&] { serverLaunchSettings("/opt/ormel", {}, options); }),
            "process error: Ormel config override keys must be non-empty strings");
}

/// The settings of a server that runs this script.
LaunchSettings scripted(const TemporaryDirectory& directory, const std::string& script) {
  return serverLaunchSettings(directory.addExecutable("server", "#!/bin/sh\n" + script), {}, OrmelOptions());
}

TEST(ServerConnectionToAChild, TalksWithAChildOverItsPipes) {
  const TemporaryDirectory directory;
  const auto accumulator = std::make_shared<AppServerLockedData>();
  auto connection =
      ServerConnection::launch(SystemProcessLauncher::shared(),
                               scripted(directory, "echo \"$1\"\necho trouble >&2\ncat\nprintf tail\n"), accumulator);
  connection->write(JSONValue::object({{"id", 1}}));
  connection->closeInput();
  const auto heard = std::make_shared<std::vector<std::string>>();
  Production().run(noted(connection->read(), heard));
  EXPECT_THAT(*heard, ElementsAre("app-server", R"({"id":1})", "tail", "end"));
  Production().run(
      StandardErrorCollector::settled(connection->errorOutput(), productionScheduler(), std::chrono::seconds(10)));
  EXPECT_EQ(connection->errorOutput()->text(), "trouble");
  EXPECT_TRUE(eventually([&] { return !connection->isRunning(); }));
}

TEST(ServerConnectionToAChild, LeavesNothingBehindWhenItIsClosed) {
  const TemporaryDirectory directory;
  const LaunchSettings settings = scripted(directory, "exec sleep 1000\n");
  // A launch that fails has the library start its threads, which stay.
  LaunchSettings missing;
  missing.executable = "/no/such/file";
  EXPECT_THROW(
      ServerConnection::launch(SystemProcessLauncher::shared(), missing, std::make_shared<AppServerLockedData>()),
      OrmelProcessError);
  const ProcessResources before = ProcessResources::now();
  for (int time = 0; time < 3; ++time) {
    auto connection =
        ServerConnection::launch(SystemProcessLauncher::shared(), settings, std::make_shared<AppServerLockedData>());
    ServerOutput output = connection->read();
    std::stop_token stop = output.stopToken();
    const auto heard = std::make_shared<std::vector<std::string>>();
    const auto reading = startOn(productionScheduler(), noted(std::move(output), heard), std::move(stop));
    connection.reset();
    reading->waitUntilSet();
    EXPECT_EQ(heard->size(), 1U);
  }
  EXPECT_TRUE(eventually([&] { return ProcessResources::now().isNoMoreThan(before); }));
}

TEST(ServerConnectionToAChild, TellsThatTheExecutableIsMissing) {
  const TemporaryDirectory directory;
  const auto accumulator = std::make_shared<AppServerLockedData>();
  const auto connection = ServerConnection::launch(
      SystemProcessLauncher::shared(), serverLaunchSettings(directory / "missing", {}, OrmelOptions()), accumulator);
  const auto heard = std::make_shared<std::vector<std::string>>();
  Production().run(noted(connection->read(), heard));
  EXPECT_THAT(*heard, ElementsAre("end"));
  Production().run(
      StandardErrorCollector::settled(connection->errorOutput(), productionScheduler(), std::chrono::seconds(10)));
  EXPECT_NE(accumulator->string().find("missing"), std::string::npos) << accumulator->string();
}

}  // namespace
