#include "OrmelSDK/Platform/IORuntime.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <array>
#include <asio/post.hpp>
#include <chrono>
#include <cstdlib>
#include <future>
#include <latch>
#include <memory>
#include <vector>

#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Platform/DescriptorWriter.h"
#include "OrmelSDK/Platform/FileDescriptor.h"
#include "OrmelSDK/Platform/SystemProcessLauncher.h"
#include "Support/Eventually.h"
#include "Support/RecordedChild.h"
#include "Support/ThreadSignals.h"

namespace ormel::detail {

namespace {

using testing::eventually;
using ::testing::ExitedWithCode;
using testing::shell;

constexpr int chosenStatus = 7;

/// A static object of the application that is older than the pool and is destroyed after it.
class LateUser {
 public:
  ~LateUser() {
    if (!child_) return;
    productionScheduler().post([] {});
    child_->output()->stop();
    child_->write("nobody reads this");
    child_->terminate();
    child_.reset();
  }

  void begin() {
    child_ = SystemProcessLauncher::shared().launch(shell("exec cat"), [](const Termination&) {});
    child_->output()->start({});
    child_->errorOutput()->start({});
    productionScheduler().post([] {});
  }

 private:
  std::unique_ptr<ChildProcess> child_;
};

LateUser lateUser;

/// Each process that is to end is a fresh one, which starts a pool of its own.
class IORuntimeDeathTest : public ::testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

/// The signals that are unblocked on two pool threads. Each thread waits until the other one has arrived.
std::array<std::vector<int>, 2> unblockedInTheThreads() {
  std::latch both(2);
  std::array<std::promise<std::vector<int>>, 2> told;
  for (auto& promise : told) {
    asio::post(IORuntime::shared().context(), [&promise, &both] {
      both.arrive_and_wait();
      promise.set_value(testing::unblockedSignals());
    });
  }
  return {told[0].get_future().get(), told[1].get_future().get()};
}

}  // namespace

TEST(IORuntime, HasAllSignalsBlockedInItsThreadsSaveTheThreadsOwnFaultsAndNoneInThoseOfTheApplication) {
  const auto before = testing::unblockedSignals();
  EXPECT_THAT(unblockedInTheThreads(), ::testing::Each(::testing::UnorderedElementsAre(SIGSEGV, SIGBUS, SIGFPE, SIGILL,
                                                                                       SIGTRAP, SIGSYS, SIGABRT)));
  EXPECT_THAT(before, ::testing::IsSupersetOf({SIGPIPE, SIGINT, SIGTERM, SIGCHLD, SIGUSR1, SIGSEGV}));
  EXPECT_EQ(testing::unblockedSignals(), before);
}

/// Runs code of the application on two threads of the pool at once.
void lendTwoThreads() {
  std::latch both(2);
  std::latch ended(2);
  for (int lent = 0; lent < 2; ++lent) {
    productionScheduler().post([&both, &ended] {
      both.arrive_and_wait();
      ended.count_down();
    });
  }
  ended.wait();
}

TEST(IORuntime, KeepsTheLastThreadThatServesThoughItWasAskedToRetireWhenItWasIdle) {
  auto& runtime = IORuntime::shared();
  runtime.start();
  std::promise<void> isLent;
  std::promise<void> mayEnd;
  std::promise<void> hasEnded;
  productionScheduler().post([&] {
    isLent.set_value();
    mayEnd.get_future().wait();
    hasEnded.set_value();
  });
  isLent.get_future().wait();
  // Two serve when nothing is lent, so this reaches the only one that is left.
  runtime.askToRetire(1);
  std::promise<void> isServed;
  asio::post(runtime.context(), [&isServed] { isServed.set_value(); });
  EXPECT_EQ(isServed.get_future().wait_for(std::chrono::seconds(20)), std::future_status::ready);
  mayEnd.set_value();
  hasEnded.get_future().wait();
}

TEST(IORuntime, LeavesNoSignalOfADeadPipeToTheApplication) {
  IORuntime::shared().start();
  for (int round = 0; round < 20; ++round) {
    Pipe pipe = makePipe();
    pipe.readEnd.close();
    const auto writer = std::make_shared<DescriptorWriter>(IORuntime::shared().context(), std::move(pipe.writeEnd));
    writer->write("nobody reads this");
    ASSERT_TRUE(eventually([&] { return !writer->isOpen(); }));
    lendTwoThreads();
  }
}

TEST_F(IORuntimeDeathTest, MayBeUsedUntilTheVeryEndOfTheProcess) {
  EXPECT_EXIT(
      {
        lateUser.begin();
        std::exit(chosenStatus);
      },
      ExitedWithCode(chosenStatus), "");
}

TEST_F(IORuntimeDeathTest, LetsOneOfItsThreadsEndTheProcess) {
  EXPECT_EXIT(
      {
        asio::post(IORuntime::shared().context(), [] { std::exit(chosenStatus); });
        eventually([] { return false; });
      },
      ExitedWithCode(chosenStatus), "");
}

TEST(IORuntimeForkDeathTest, IsLeftAloneByAForkedProcessThatEnds) {
  testing::RecordedChild child(SystemProcessLauncher::shared(), shell("exec cat"));
  EXPECT_EXIT(std::exit(chosenStatus), ExitedWithCode(chosenStatus), "");
  child->write("still here");
  EXPECT_TRUE(child.waitForOutput("still here"));
}

}  // namespace ormel::detail
