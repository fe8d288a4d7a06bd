#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "OrmelSDK/Embedding/EmbeddedServer.h"
#include "Support/ThreadSignals.h"

namespace ormel {
namespace {

using testing::embeddedTurn;
using testing::embeddedTurnEnds;
using testing::optionsFor;
using testing::SimulatorScenario;
using testing::unblockedSignals;

std::string turnWithApproval() {
  return embeddedTurn + std::string(testing::asksForApproval) + " expecting {\"decision\": \"decline\"}\n" +
         embeddedTurnEnds;
}

/// Each test is a process of its own, since the library takes the mask of its first use.
class SignalsOfTheApplication : public ::testing::Test {
 protected:
  void SetUp() override {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    sigset_t one;
    sigemptyset(&one);
    sigaddset(&one, SIGUSR2);
    pthread_sigmask(SIG_BLOCK, &one, nullptr);
    before = unblockedSignals();
  }

  std::vector<int> before;
};
using SignalsOfTheApplicationDeathTest = SignalsOfTheApplication;

TEST_F(SignalsOfTheApplication, AreThoseOfItsFirstUseInAllItsCode) {
  std::vector<int> inHandler;
  std::vector<int> inAssessment;
  std::vector<int> inCoroutine;
  std::vector<int> inCallback;
  std::string inProgram;
  OneShot<void> called;
  const auto resolver = std::make_shared<OneShotResolver<void>>(called.resolver());
  const SimulatorScenario scenario(turnWithApproval());
  OrmelOptions options = optionsFor(scenario);
  options.executableTrustAssessment = [&](const std::string&) {
    inAssessment = unblockedSignals();
    return OrmelExecutableTrustAssessment::trusted();
  };
  const auto threadOptions = testing::whenAskedForApproval([&] {
    inHandler = unblockedSignals();
    const std::string told = scenario.path().string() + ".mask";
    if (std::system(("grep SigBlk /proc/self/status > " + told).c_str()) == 0) {
      std::getline(std::ifstream(told), inProgram);
    }
  });
  auto thread = Ormel(options).startThread(threadOptions);
  const auto running = [&]() -> Task<void> {
    co_await thread.run("go");
    inCoroutine = unblockedSignals();
  };
  running().start([&, resolver](const TaskResult<void>&) {
    inCallback = unblockedSignals();
    resolver->resume();
  });
  testing::awaited(called);
  EXPECT_EQ(inHandler, before);
  EXPECT_EQ(inAssessment, before);
  EXPECT_EQ(inCoroutine, before);
  EXPECT_EQ(inCallback, before);
  EXPECT_EQ(unblockedSignals(), before);
  // SIGUSR2 is the twelfth.
  EXPECT_EQ(inProgram, "SigBlk:\t0000000000000800");
}

TEST_F(SignalsOfTheApplicationDeathTest, ReachTheCrashHandlerFromAHandler) {
  constexpr int chosenStatus = 9;
  const SimulatorScenario scenario(turnWithApproval());
  EXPECT_EXIT(
      {
        struct sigaction action{};
        action.sa_handler = [](int) { ::_exit(chosenStatus); };
        sigaction(SIGSEGV, &action, nullptr);
        const auto threadOptions = testing::whenAskedForApproval([] { ::raise(SIGSEGV); });
        Ormel(optionsFor(scenario)).startThread(threadOptions).run("go").get();
      },
      ::testing::ExitedWithCode(chosenStatus), "");
}

}  // namespace
}  // namespace ormel
