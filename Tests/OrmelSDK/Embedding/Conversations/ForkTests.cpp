#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <optional>
#include <string>

#include "OrmelSDK/Embedding/EmbeddedServer.h"
#include "OrmelSDK/Platform/IORuntime.h"
#include "OrmelSDK/Records/ThreadRecords.h"

namespace {

bool isForkedChild = false;

}  // namespace

/// Asked by the leak sanitizer, where there is one: in a forked child it cannot see what the parent's threads hold.
extern "C" int __lsan_is_turned_off();  // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
int __lsan_is_turned_off() { return isForkedChild ? 1 : 0; }

namespace ormel {
namespace {

using testing::embeddedTurn;
using testing::embeddedTurnEnds;
using testing::failureOf;
using testing::optionsFor;
using testing::SimulatorScenario;

constexpr int good = 11;

/// The status with which a forked child ends that runs the body; it ends by `exit`, with all static objects.
int statusOfForked(const std::function<bool()>& body) {
  const pid_t child = ::fork();
  if (child == 0) {
    isForkedChild = true;
    std::exit(body() ? good : 1);
  }
  int status = 0;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

const std::string forkedText =
    "other error: This process was forked from one that had used the library, whose threads stayed there; use the "
    "library in one of the two only, or have the child call exec";

TEST(ForkedProcesses, AreRefusedAtOnceAndLeaveTheServersToTheParent) {
  const SimulatorScenario scenario(embeddedTurn + embeddedTurnEnds + testing::turnIsAccepted + embeddedTurnEnds);
  const Ormel ormel(optionsFor(scenario));
  std::optional<Thread> thread = ormel.startThread();
  thread->run("first").get();
  EXPECT_EQ(statusOfForked([&] {
              const bool isRefused =
                  failureOf([&] { thread->run("second").get(); }) == forkedText &&
                  failureOf([&] { ormel.startThread().run("new").get(); }) == forkedText &&
                  failureOf([&] { thread->interrupt().start([](const TaskResult<void>&) {}); }) == forkedText &&
                  failureOf([&] { thread->interrupt().detach(); }) == forkedText &&
                  failureOf([&] { productionScheduler().post([] {}); }) == forkedText &&
                  failureOf([&] { ormel.listThreads().get(); }) == forkedText;
              thread.reset();
              return isRefused;
            }),
            good);
  thread->run("second").get();
  EXPECT_EQ(scenario.processesStarted(), 1U);
}

TEST(ForkedProcesses, MayUseAThreadThatWasMadeBefore) {
  if (detail::IORuntime::shared().isStarted()) GTEST_FAIL() << "run this test in a process of its own";
  const SimulatorScenario scenario(embeddedTurn + embeddedTurnEnds);
  const Ormel ormel(optionsFor(scenario));
  auto thread = ormel.startThread();
  EXPECT_EQ(statusOfForked([&] {
              thread.run("go").get();
              return true;
            }),
            good);
}

}  // namespace
}  // namespace ormel
