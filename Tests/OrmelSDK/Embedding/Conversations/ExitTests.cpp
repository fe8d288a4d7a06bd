#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "OrmelSDK/Embedding/EmbeddedServer.h"
#include "Support/Eventually.h"
#include "Support/TemporaryDirectory.h"

namespace ormel {
namespace {

using testing::embeddedTurn;
using testing::embeddedTurnEnds;
using testing::optionsFor;
using testing::SimulatorScenario;

constexpr int chosenStatus = 7;
constexpr const char* recordVariable = "ORMEL_TEST_OF_EXIT_RECORD";

/// Each process that is to end is a fresh one; its servers write into a record that this one reads.
class ExitDeathTest : public ::testing::Test {
 protected:
  void SetUp() override {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    if (!std::getenv(recordVariable)) ::setenv(recordVariable, (folder_.path() / "record").c_str(), 1);
  }
  void TearDown() override { ::unsetenv(recordVariable); }

  static OrmelOptions recordedOptionsFor(const SimulatorScenario& scenario) {
    OrmelOptions options = optionsFor(scenario);
    options.env->insert_or_assign("ORMEL_SIMULATOR_RECORD", std::getenv(recordVariable));
    return options;
  }

  static void expectServersToEnd(std::size_t count) {
    std::ifstream record(std::getenv(recordVariable));
    std::size_t started = 0;
    for (std::string line; std::getline(record, line);) {
      const JSONValue entry = JSONValue::decode(line);
      if (*entry.find("event") != JSONValue("start")) continue;
      ++started;
      const auto server = static_cast<pid_t>(*entry.find("process")->numberValue());
      EXPECT_TRUE(testing::eventually([server] { return ::kill(server, 0) != 0; })) << server;
    }
    EXPECT_EQ(started, count);
  }

 private:
  testing::TemporaryDirectory folder_;
};

/// Used by handlers that run while the process ends.
class StaticObject {
 public:
  ~StaticObject() { value = -1; }
  std::atomic<int> value{0};
};
StaticObject staticObject;

/// A conversation that stands as a static object, older than the library's threads.
std::optional<Thread> staticThread;

const std::string askingTurn = embeddedTurn + std::string(testing::asksForApproval) + "\n";

TEST_F(ExitDeathTest, DoesNotWaitForABlockedHandler) {
  const SimulatorScenario scenario(askingTurn);
  EXPECT_EXIT(
      {
        OneShot<void> asked;
        const auto resolver = std::make_shared<OneShotResolver<void>>(asked.resolver());
        staticThread.emplace(Ormel(recordedOptionsFor(scenario)).startThread(testing::whenAskedForApproval([resolver] {
          resolver->resume();
          for (;;) ::pause();
        })));
        const auto turn = staticThread->runStreamed("go").get();
        testing::awaited(asked);
        std::exit(chosenStatus);
      },
      ::testing::ExitedWithCode(chosenStatus), "");
  expectServersToEnd(1);
}

TEST_F(ExitDeathTest, WorksFromAHandler) {
  const SimulatorScenario scenario(askingTurn);
  EXPECT_EXIT(
      {
        const auto threadOptions = testing::whenAskedForApproval([] { std::exit(chosenStatus); });
        staticThread.emplace(Ormel(recordedOptionsFor(scenario)).startThread(threadOptions));
        const auto turn = staticThread->runStreamed("go").get();
        testing::eventually([] { return false; });
      },
      ::testing::ExitedWithCode(chosenStatus), "");
  expectServersToEnd(1);
}

TEST_F(ExitDeathTest, WorksWhileHandlersAreRunning) {
  std::string asking = embeddedTurn;
  for (int asked = 0; asked < 40; ++asked) asking += std::string(testing::asksForApproval) + "\n";
  const SimulatorScenario scenario(asking + "repeat 1000 times\n" + testing::asksForApproval + "\nend\n");
  EXPECT_EXIT(
      {
        const auto threadOptions = testing::whenAskedForApproval([] { ++staticObject.value; });
        staticThread.emplace(Ormel(recordedOptionsFor(scenario)).startThread(threadOptions));
        const auto turn = staticThread->runStreamed("go").get();
        testing::eventually([] { return staticObject.value > 20; });
        std::exit(chosenStatus);
      },
      ::testing::ExitedWithCode(chosenStatus), "");
  expectServersToEnd(1);
}

TEST_F(ExitDeathTest, EndsAServerThatIgnoresTheEndOfItsInput) {
  const SimulatorScenario scenario(askingTurn + "wait until killed\n");
  EXPECT_EXIT(
      {
        staticThread.emplace(Ormel(recordedOptionsFor(scenario)).startThread());
        const auto turn = staticThread->runStreamed("go").get();
        std::exit(chosenStatus);
      },
      ::testing::ExitedWithCode(chosenStatus), "");
  expectServersToEnd(1);
}

TEST_F(ExitDeathTest, IsToldWhyADetachedTaskEndsTheProcess) {
  EXPECT_DEATH(
      {
        const auto failing = []() -> Task<void> {
          throw std::runtime_error("the database is down");
          co_return;
        };
        failing().detach();
      },
      "Fatal error: A detached task failed: the database is down");
}

}  // namespace
}  // namespace ormel
