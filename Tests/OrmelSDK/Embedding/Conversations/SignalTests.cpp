#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <string>
#include <vector>

#include "OrmelSDK/Embedding/EmbeddedServer.h"
#include "Support/ThreadSignals.h"

namespace ormel {
namespace {

using testing::optionsFor;
using testing::SimulatorScenario;
using testing::unblockedSignals;

/// The line about blocked signals that a program sees that the calling thread starts. No shell: one may clear its mask.
std::string blockedInAProgram(const std::string& file) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, file.c_str(), O_WRONLY | O_CREAT, S_IRUSR | S_IWUSR);
  std::array<std::string, 3> arguments = {"grep", "SigBlk", "/proc/self/status"};
  std::array<char*, 4> pointers = {arguments[0].data(), arguments[1].data(), arguments[2].data(), nullptr};
  pid_t child = 0;
  const int failure = ::posix_spawnp(&child, "grep", &actions, nullptr, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failure != 0 || ::waitpid(child, nullptr, 0) != child) return "not started";
  std::string line;
  std::ifstream told(file);
  std::getline(told, line);
  return line;
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
  const SimulatorScenario scenario(testing::embeddedTurnWithApproval);
  OrmelOptions options = optionsFor(scenario);
  options.executableTrustAssessment = [&](const std::string&) {
    inAssessment = unblockedSignals();
    return OrmelExecutableTrustAssessment::trusted();
  };
  const auto threadOptions = testing::whenAskedForApproval([&] {
    inHandler = unblockedSignals();
    inProgram = blockedInAProgram(scenario.path().string() + ".mask");
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
  constexpr int crashStatus = 9;
  const SimulatorScenario scenario(testing::embeddedTurnWithApproval);
  EXPECT_EXIT(
      {
        struct sigaction action{};
        action.sa_handler = [](int) { ::_exit(crashStatus); };
        sigaction(SIGSEGV, &action, nullptr);
        const auto threadOptions = testing::whenAskedForApproval([] { ::raise(SIGSEGV); });
        Ormel(optionsFor(scenario)).startThread(threadOptions).run("go").get();
      },
      ::testing::ExitedWithCode(crashStatus), "");
}

}  // namespace
}  // namespace ormel
