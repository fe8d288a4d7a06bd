#include "OrmelSDK/Platform/BlockingWork.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <stdexcept>
#include <stop_token>
#include <thread>
#include <utility>
#include <vector>

#include "OrmelSDK/Concurrency/Scheduler.h"
#include "Support/ConcurrencySchedulers.h"
#include "Support/ThreadSignals.h"

namespace ormel::detail {
namespace {

using testing::startOn;
using testing::unblockedSignals;

TEST(BlockingWorkOnThreads, RunsEachPieceInAThreadOfItsOwnWithTheSignalsOfTheApplication) {
  std::promise<std::thread::id> told[2];
  std::promise<std::vector<int>> unblocked;
  std::promise<void> bothRun;
  const auto released = bothRun.get_future().share();
  // Both wait for each other, so neither runs within the call nor after the other.
  for (auto& promise : told) {
    BlockingWork::onThreads().run([&promise, released] {
      promise.set_value(std::this_thread::get_id());
      released.wait();
    });
  }
  const auto first = told[0].get_future().get();
  const auto second = told[1].get_future().get();
  bothRun.set_value();
  EXPECT_NE(first, second);
  EXPECT_NE(first, std::this_thread::get_id());
  BlockingWork::onThreads().run([&unblocked] { unblocked.set_value(unblockedSignals()); });
  EXPECT_EQ(unblocked.get_future().get(), unblockedSignals());
}

TEST(BlockingWorkOnThreads, LeavesTheSignalsOfItsCallerAsTheyAre) {
  const auto before = unblockedSignals();
  EXPECT_FALSE(before.empty());
  BlockingWork::onThreads().run([] {});
  EXPECT_EQ(unblockedSignals(), before);
}

TEST(BlockingWorkOnThreads, HasItsCallerGoOnWhereItWasOnceTheWorkHasEnded) {
  const auto body = [](std::thread::id& workedOn) -> Task<bool> {
    auto work = [&workedOn] { workedOn = std::this_thread::get_id(); };
    auto running = runBlocking(BlockingWork::onThreads(), std::move(work));
    co_await std::move(running);
    co_return std::this_thread::get_id() != workedOn;
  };
  std::thread::id workedOn;
  const auto outcome = startOn(productionScheduler(), body(workedOn));
  outcome->waitUntilSet();
  EXPECT_TRUE(outcome->take());
  EXPECT_NE(workedOn, std::thread::id());
}

TEST(BlockingWorkOnThreads, FailsAsTheWorkFails) {
  auto work = [] { throw std::runtime_error("no such tool"); };
  const auto outcome = startOn(productionScheduler(), runBlocking(BlockingWork::onThreads(), work));
  outcome->waitUntilSet();
  try {
    outcome->take();
    FAIL() << "did not fail";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "no such tool");
  }
}

TEST(BlockingWorkOnThreads, IsNotWaitedForByACallerThatIsCancelled) {
  std::stop_source stop;
  auto ended = std::make_shared<std::promise<void>>();
  auto released = std::make_shared<std::promise<void>>();
  auto work = [ended, released] {
    released->get_future().wait();
    ended->set_value();
  };
  const auto outcome =
      startOn(productionScheduler(), runBlocking(BlockingWork::onThreads(), std::move(work)), stop.get_token());
  stop.request_stop();
  outcome->waitUntilSet();
  EXPECT_THROW(outcome->take(), CancelledError);
  released->set_value();
  EXPECT_EQ(ended->get_future().wait_for(testing::patience), std::future_status::ready);
}

}  // namespace
}  // namespace ormel::detail
