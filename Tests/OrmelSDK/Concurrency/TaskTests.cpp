#include "OrmelSDK/Concurrency/Task.h"

#include <gtest/gtest.h>

#include <coroutine>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Concurrency/Sleep.h"
#include "OrmelSDK/Concurrency/Strand.h"
#include "OrmelSDK/Concurrency/TaskGroup.h"
#include "Support/ConcurrencySchedulers.h"
#include "Support/ForeignCoroutine.h"

namespace ormel {
namespace {

using testing::BothSchedulers;
using testing::ForeignCoroutine;
using testing::startOn;
using testing::underSeeds;

constexpr int deep = 100'000;

Task<int> seven() { co_return 7; }
Task<std::string> text() { co_return std::to_string(co_await seven()); }
Task<void> throwing() {
  co_await seven();
  throw std::runtime_error("thrown");
}
Task<int&> refer(int& number) { co_return number; }

template <typename Runner>
class TaskOnScheduler : public ::testing::Test {
 protected:
  Runner runner;
};
TYPED_TEST_SUITE(TaskOnScheduler, BothSchedulers);

TYPED_TEST(TaskOnScheduler, GivesTheValueOfItsBody) { EXPECT_EQ(this->runner.run(text()), "7"); }

TYPED_TEST(TaskOnScheduler, PassesAnExceptionOnThroughEachAwait) {
  auto outer = []() -> Task<void> { co_await throwing(); };
  EXPECT_THROW(this->runner.run(outer()), std::runtime_error);
}

TYPED_TEST(TaskOnScheduler, GivesMoveOnlyValuesAndReferences) {
  int number = 1;
  auto body = [](int& target) -> Task<std::unique_ptr<int>> {
    int& same = co_await refer(target);
    same = 5;
    co_return std::make_unique<int>(same);
  };
  EXPECT_EQ(*this->runner.run(body(number)), 5);
  EXPECT_EQ(number, 5);
}

TYPED_TEST(TaskOnScheduler, SleepsAtLeastAsLongAsToldOnTheClockOfItsScheduler) {
  Scheduler& scheduler = this->runner.scheduler();
  auto body = [](Scheduler& on) -> Task<std::uint64_t> {
    const auto before = on.now();
    co_await sleepFor(on, std::chrono::milliseconds(3));
    co_return on.now() - before;
  };
  EXPECT_GE(this->runner.run(body(scheduler)), 3'000'000U);
}

TYPED_TEST(TaskOnScheduler, AwaitsCompletedTasksInALongLoopAtConstantStackDepth) {
  auto loop = []() -> Task<int> {
    int sum = 0;
    for (int i = 0; i < deep; ++i) sum += co_await seven();
    co_return sum;
  };
  EXPECT_EQ(this->runner.run(loop()), 7 * deep);
}

Task<int> chain(int length) {
  if (length == 0) co_return 0;
  const int rest = co_await chain(length - 1);
  co_return rest + 1;
}

TYPED_TEST(TaskOnScheduler, EntersAndLeavesADeepChainAtConstantStackDepth) {
  EXPECT_EQ(this->runner.run(chain(deep)), deep);
}

Task<int> chainOver(OneShot<int>& end, int length) {
  if (length == 0) {
    const int value = co_await end.wait();
    co_return value;
  }
  const int rest = co_await chainOver(end, length - 1);
  co_return rest + 1;
}

TYPED_TEST(TaskOnScheduler, LeavesADeepChainThatWaitedAtConstantStackDepth) {
  OneShot<int> end;
  this->runner.scheduler().post([resolver = end.resolver()] { resolver.resume(1); });
  EXPECT_EQ(this->runner.run(chainOver(end, deep)), deep + 1);
}

TYPED_TEST(TaskOnScheduler, HopsOnItsStrandInALongLoopAtConstantStackDepth) {
  const Strand strand(this->runner.scheduler());
  auto loop = [](Strand on) -> Task<int> {
    for (int i = 0; i < deep; ++i) co_await on.yield();
    co_return deep;
  };
  EXPECT_EQ(this->runner.run(loop(strand).onStrand(strand)), deep);
}

TYPED_TEST(TaskOnScheduler, ResumesOnItsStrandAfterEachKindOfAwait) {
  const Strand strand(this->runner.scheduler());
  const Strand other(this->runner.scheduler());
  auto elsewhere = [](Strand to) -> Task<bool> {
    co_await to.enter();
    co_return to.isCurrent();
  };
  auto body = [&elsewhere](Scheduler& scheduler, Strand home, Strand away) -> Task<std::vector<bool>> {
    std::vector<bool> held;
    held.push_back(home.isCurrent());
    co_await seven();
    held.push_back(home.isCurrent());
    co_await sleepFor(scheduler, std::chrono::microseconds(1));
    held.push_back(home.isCurrent());
    const bool entered = co_await elsewhere(away);
    held.push_back(entered && home.isCurrent());
    const bool began = co_await elsewhere(away).onStrand(away);
    held.push_back(began && home.isCurrent());
    co_await sleepFor(scheduler, std::chrono::microseconds(1)).onScheduler(scheduler);
    held.push_back(home.isCurrent());
    try {
      co_await throwing().onStrand(away);
    } catch (const std::runtime_error&) {
      held.push_back(home.isCurrent());
    }
    co_await home.yield();
    held.push_back(home.isCurrent());
    co_return held;
  };
  const auto held = this->runner.run(body(this->runner.scheduler(), strand, other).onStrand(strand));
  EXPECT_EQ(held, std::vector<bool>(8, true));
}

/// Resumes the coroutine on a thread outside the library.
class ResumedByAnotherThread {
 public:
  explicit ResumedByAnotherThread(std::thread& thread) : thread_(thread) {}
  bool await_ready() const noexcept { return false; }
  void await_suspend(std::coroutine_handle<> coroutine) {
    thread_ = std::thread([coroutine] { coroutine.resume(); });
  }
  int await_resume() const noexcept { return 3; }

 private:
  std::thread& thread_;
};

TEST(Task, ReturnsToItsStrandFromAnAwaitableThatResumesItOnAForeignThread) {
  std::thread thread;
  testing::Production runner;
  const Strand strand(runner.scheduler());
  auto body = [](Strand home, std::thread& helper) -> Task<bool> {
    const int given = co_await ResumedByAnotherThread(helper);
    co_return given == 3 && home.isCurrent();
  };
  EXPECT_TRUE(runner.run(body(strand, thread).onStrand(strand)));
  thread.join();
}

TEST(Task, KeepsItsStrandAliveWhileItIsAway) {
  std::thread thread;
  testing::Production runner;
  auto body = [](std::thread& helper) -> Task<int> {
    const int first = co_await ResumedByAnotherThread(helper);
    co_await sleepFor(productionScheduler(), std::chrono::microseconds(10)).onScheduler(productionScheduler());
    co_return first;
  };
  auto task = body(thread).onStrand(Strand(runner.scheduler()));
  EXPECT_EQ(runner.run(std::move(task)), 3);
  thread.join();
}

TYPED_TEST(TaskOnScheduler, IsAwaitedByAForeignCoroutine) {
  testing::Outcome<int> outcome;
  auto foreign = [](Scheduler& scheduler, testing::Outcome<int>& into) -> ForeignCoroutine {
    OneShot<int> direct;
    direct.resume(1);
    const int first = co_await direct.wait();
    co_await sleepFor(scheduler, std::chrono::microseconds(1)).onScheduler(scheduler);
    int sum = first;
    for (int i = 0; i < deep; ++i) sum += co_await seven();
    TaskResult<int> result;
    result.setValue(sum);
    into.set(std::move(result));
  };
  auto starter = [&]() -> Task<void> {
    foreign(this->runner.scheduler(), outcome);
    co_return;
  };
  this->runner.run(starter());
  outcome.waitUntilSet();
  EXPECT_EQ(outcome.take(), 7 * deep + 1);
}

TYPED_TEST(TaskOnScheduler, InheritsItsStopTokenThroughAwaits) {
  std::stop_source source;
  auto inner = []() -> Task<bool> {
    const auto token = co_await currentStopToken();
    co_return token.stop_requested();
  };
  auto outer = [&inner](std::stop_source& stop) -> Task<std::vector<bool>> {
    std::vector<bool> seen;
    seen.push_back(co_await inner());
    stop.request_stop();
    seen.push_back(co_await inner());
    seen.push_back(co_await inner().withStopToken({}));
    co_return seen;
  };
  EXPECT_EQ(this->runner.run(outer(source), source.get_token()), (std::vector<bool>{false, true, false}));
}

TYPED_TEST(TaskOnScheduler, EndsASleepWithCancelledErrorWhenItIsStopped) {
  std::stop_source source;
  this->runner.scheduler().post([&source] { source.request_stop(); });
  auto nested = [](Scheduler& scheduler) -> Task<void> { co_await sleepFor(scheduler, std::chrono::hours(1)); };
  EXPECT_THROW(this->runner.run(nested(this->runner.scheduler()), source.get_token()), CancelledError);
}

TYPED_TEST(TaskOnScheduler, DoesNotSleepAtAllWhenItWasStoppedBefore) {
  std::stop_source source;
  source.request_stop();
  EXPECT_THROW(this->runner.run(sleepFor(this->runner.scheduler(), std::chrono::hours(1)), source.get_token()),
               CancelledError);
}

TYPED_TEST(TaskOnScheduler, ReportsItsEndToTheCallbackOfStart) {
  testing::Outcome<int> good;
  testing::Outcome<void> bad;
  seven().start([&](TaskResult<int> result) { good.set(std::move(result)); });
  throwing().onScheduler(this->runner.scheduler()).start([&](TaskResult<void> result) { bad.set(std::move(result)); });
  EXPECT_TRUE(good.isSet());
  this->runner.run(seven());
  bad.waitUntilSet();
  EXPECT_EQ(good.take(), 7);
  EXPECT_THROW(bad.take(), std::runtime_error);
}

TYPED_TEST(TaskOnScheduler, CancelsAndJoinsTheTasksOfAGroup) {
  auto body = [](Scheduler& scheduler) -> Task<int> {
    TaskGroup group;
    std::atomic<int> cancelled = 0;
    auto child = [](Scheduler& on, std::atomic<int>& count) -> Task<void> {
      try {
        co_await sleepFor(on, std::chrono::hours(1));
      } catch (const CancelledError&) {
        ++count;
        throw;
      }
    };
    for (int i = 0; i < 5; ++i) group.spawn(child(scheduler, cancelled).onScheduler(scheduler));
    group.cancel();
    co_await group.join();
    co_await group.join();
    co_return cancelled.load();
  };
  EXPECT_EQ(this->runner.run(body(this->runner.scheduler())), 5);
}

TEST(Task, BlocksAnOrdinaryThreadUntilItEnds) {
  EXPECT_EQ(text().get(), "7");
  EXPECT_THROW(throwing().get(), std::runtime_error);
  sleepFor(productionScheduler(), std::chrono::milliseconds(1)).get();
}

TEST(Task, RefusesToBlockAThreadOfTheLibraryAndStaysAsItIs) {
  auto body = []() -> Task<std::string> {
    auto task = seven();
    std::string refusal = "blocked";
    try {
      task.get();
    } catch (const WouldDeadlockError& error) {
      refusal = error.what();
    }
    const int value = co_await std::move(task);
    co_return refusal + " / " + std::to_string(value);
  };
  const std::string expected = "A blocking wait on a thread of the library would deadlock; use co_await instead / 7";
  EXPECT_EQ(testing::Production().run(body()), expected);
  EXPECT_EQ(testing::Simulated().run(body()), expected);
}

TEST(Task, DoesNothingWhenItIsNeverStarted) {
  bool ran = false;
  auto witness = std::make_shared<int>(1);
  auto body = [](bool& flag, std::shared_ptr<int>) -> Task<void> {
    flag = true;
    co_return;
  };
  {
    const auto task = body(ran, witness);
  }
  EXPECT_FALSE(ran);
  EXPECT_EQ(witness.use_count(), 1);
}

TEST(Task, DropsValueAndCancellationWhenItIsDetached) {
  std::stop_source source;
  source.request_stop();
  seven().detach();
  sleepFor(productionScheduler(), std::chrono::hours(1)).withStopToken(source.get_token()).detach();
}

TEST(TaskDeathTest, EndsTheProcessWhenItFailsDetached) { EXPECT_DEATH(throwing().detach(), ""); }

TEST(TaskDeathTest, EndsTheProcessWhenItIsUsedTwice) {
  auto twice = [] {
    auto task = seven();
    task.get();
    task.get();
  };
  EXPECT_DEATH(twice(), "A task was used that is empty or has been started already");
}

TEST(Task, StartsWithinTheCallOfStartAlsoInsideARunningTask) {
  auto body = []() -> Task<bool> {
    bool ran = false;
    seven().start([&ran](TaskResult<int> result) { ran = result.take() == 7; });
    co_return ran;
  };
  EXPECT_TRUE(testing::Simulated().run(body()));
}

}  // namespace
}  // namespace ormel
