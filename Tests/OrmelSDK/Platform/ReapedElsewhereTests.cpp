#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "OrmelSDK/Platform/FailureInjection.h"
#include "OrmelSDK/Platform/ProcessHandle.h"
#include "OrmelSDK/Platform/ProcessLaunchError.h"
#include "OrmelSDK/Platform/Spawn.h"
#include "OrmelSDK/Platform/SystemProcessLauncher.h"
#include "Support/Eventually.h"
#include "Support/Fifo.h"
#include "Support/ForeignReaping.h"
#include "Support/ProcessResources.h"
#include "Support/RecordedChild.h"

namespace ormel::detail {

namespace {

using testing::endsAreTold;
using testing::eventually;
using testing::Fifo;
using testing::helper;
using testing::IgnoredChildren;
using testing::ProcessResources;
using testing::ReapingThread;
using testing::RecordedChild;
using testing::shell;

/// The things that an application may do to the children of its libraries.
struct Disturbance {
  const char* name;
  std::function<std::shared_ptr<void>()> begin;
};

const Disturbance disturbances[] = {
    {"SIGCHLD is ignored", [] { return std::make_shared<IgnoredChildren>(); }},
    {"a thread reaps every child", [] { return std::make_shared<ReapingThread>(); }},
};

void expectEnd(const std::optional<Termination>& told, const Termination& expected) {
  ASSERT_TRUE(told);
  if (!endsAreTold() && told->reason == TerminationReason::unknown) return;
  EXPECT_EQ(*told, expected);
}

/// How a child ended, as soon as its handle notices.
std::optional<Termination> awaitEnd(ProcessHandle& process) {
  pollfd end{process.endDescriptor(), POLLIN, 0};
  const int patience = static_cast<int>(std::chrono::milliseconds(testing::patience).count());
  if (::poll(&end, 1, patience) != 1) return std::nullopt;
  return process.reapIfEnded();
}

bool isGone(pid_t pid) { return ::kill(pid, 0) != 0; }

}  // namespace

TEST(ReapedElsewhere, ChildrenTellHowTheyEnded) {
  constexpr Termination exited = {TerminationReason::exit, 7};
  constexpr Termination killed = {TerminationReason::uncaughtSignal, SIGKILL};
  for (const auto& disturbance : disturbances) {
    SCOPED_TRACE(disturbance.name);
    const auto inForce = disturbance.begin();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
      threads.emplace_back([&] {
        for (int round = 0; round < 25; ++round) {
          ProcessHandle exiting(spawn(shell("exit 7"), {}));
          expectEnd(awaitEnd(exiting), exited);
          ProcessHandle dying(spawn(shell("kill -KILL $$"), {}));
          expectEnd(awaitEnd(dying), killed);
        }
      });
    }
    for (auto& thread : threads) thread.join();
  }
}

TEST(ReapedElsewhere, ChildrenTellHowTheyEndedBeforeAnyoneAsked) {
  for (const auto& disturbance : disturbances) {
    SCOPED_TRACE(disturbance.name);
    const auto inForce = disturbance.begin();
    SpawnedChild child = spawn(shell("exit 7"), {});
    const pid_t pid = child.pid;
    // A thread that waits is as late as a pidfd that is opened now.
    const bool hasPidfd = child.pidfd.isOpen();
    ASSERT_TRUE(eventually([pid] { return isGone(pid); }));
    ProcessHandle process(std::move(child));
    if (hasPidfd) expectEnd(awaitEnd(process), {TerminationReason::exit, 7});
  }
}

TEST(ReapedElsewhere, ServersTellHowTheyEndedThoughTheirPipesStayOpen) {
  for (const auto& disturbance : disturbances) {
    SCOPED_TRACE(disturbance.name);
    const auto inForce = disturbance.begin();
    for (int round = 0; round < 20; ++round) {
      Fifo grandchildsLife;
      RecordedChild child(SystemProcessLauncher::shared(), helper({"leave-grandchild", grandchildsLife.path(), "3"}));
      expectEnd(child.waitForTermination(), {TerminationReason::exit, 3});
      EXPECT_FALSE(child->isRunning());
      grandchildsLife.release();
      EXPECT_TRUE(child.waitForEndOfOutput());
    }
  }
}

TEST(ReapedElsewhere, ChildrenOfAWaitingThreadEndWithATrueStatusOrNone) {
  for (const auto& disturbance : disturbances) {
    SCOPED_TRACE(disturbance.name);
    const auto inForce = disturbance.begin();
    for (int round = 0; round < 50; ++round) {
      ProcessHandle process(spawn(shell("exit 7"), {}, EndNotice::waiterThread));
      EXPECT_THAT(awaitEnd(process), ::testing::AnyOf(Termination{TerminationReason::exit, 7}, Termination()));
    }
  }
}

TEST(ReapedElsewhere, FailuresToStartAreToldAllTheSame) {
  LaunchSettings missing;
  missing.executable = "/no/such/file";
  for (const auto& disturbance : disturbances) {
    SCOPED_TRACE(disturbance.name);
    const auto inForce = disturbance.begin();
    for (const auto notice : {EndNotice::automatic, EndNotice::waiterThread}) {
      for (int round = 0; round < 50; ++round) {
        EXPECT_THAT([&] { spawn(missing, {}, notice); },
                    ::testing::ThrowsMessage<ProcessLaunchError>("/no/such/file: No such file or directory"));
      }
    }
  }
  EXPECT_FALSE(ProcessResources::now().hasChildren);
}

#if defined(__linux__)

namespace {

std::atomic<int> refusalsLeft = 0;
std::atomic<int> refusal = 0;

}  // namespace

// In the middle of the reaping the system knows no such child, or does not know its end yet.
TEST(ReapedElsewhere, AnEndThatTheSystemIsSlowToRememberIsAwaited) {
  // A system that remembers no end refuses at once, and the end stays unknown.
  const Termination expected = endsAreTold() ? Termination{TerminationReason::exit, 7} : Termination();
  const IgnoredChildren inForce;
  for (const int number : {ESRCH, EAGAIN}) {
    refusal = number;
    refusalsLeft = 40;
    failureInjector = [](SystemCall call) {
      return call == SystemCall::rememberEnd && refusalsLeft-- > 0 ? refusal.load() : 0;
    };
    ProcessHandle process(spawn(shell("exit 7"), {}));
    const auto told = awaitEnd(process);
    failureInjector = nullptr;
    EXPECT_EQ(told, expected) << number;
    EXPECT_EQ(refusalsLeft < 0, endsAreTold()) << "asked until it answered";
  }
}

namespace {

volatile sig_atomic_t childSignals = 0;

}  // namespace

TEST(ReapedElsewhere, AFailureToStartIsNoChildOfTheApplications) {
  const auto before = ::signal(SIGCHLD, [](int) { childSignals = childSignals + 1; });
  LaunchSettings missing;
  missing.executable = "/no/such/file";
  EXPECT_THROW(spawn(missing, {}), ProcessLaunchError);
  ::signal(SIGCHLD, before);
  EXPECT_EQ(childSignals, 0);
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG | __WALL), -1) << "nor is anything left of it";
}

#endif

}  // namespace ormel::detail
