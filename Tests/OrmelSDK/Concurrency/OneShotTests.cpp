#include "OrmelSDK/Concurrency/OneShot.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "OrmelSDK/Concurrency/Sleep.h"
#include "OrmelSDK/Concurrency/Strand.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "Support/ConcurrencySchedulers.h"
#include "Support/ForeignCoroutine.h"

namespace ormel {
namespace {

using testing::startOn;
using testing::underSeeds;

Task<std::string> describe(OneShot<std::string>& oneShot) {
  try {
    co_return co_await oneShot.wait();
  } catch (const std::exception& error) {
    co_return std::string("error: ") + error.what();
  }
}

template <typename Runner>
class OneShotOnScheduler : public ::testing::Test {
 protected:
  Runner runner;
};
TYPED_TEST_SUITE(OneShotOnScheduler, testing::BothSchedulers);

TYPED_TEST(OneShotOnScheduler, GivesAValueThatCameBeforeTheWait) {
  OneShot<std::string> oneShot;
  EXPECT_TRUE(oneShot.resume("early"));
  EXPECT_EQ(this->runner.run(describe(oneShot)), "early");
}

TYPED_TEST(OneShotOnScheduler, GivesAValueThatComesDuringTheWait) {
  OneShot<std::string> oneShot;
  this->runner.scheduler().post([resolver = oneShot.resolver()] { resolver.resume("late"); });
  EXPECT_EQ(this->runner.run(describe(oneShot)), "late");
}

TYPED_TEST(OneShotOnScheduler, ThrowsTheErrorThatItWasCompletedWith) {
  OneShot<std::string> oneShot;
  this->runner.scheduler().post([resolver = oneShot.resolver()] { resolver.fail(std::runtime_error("broken")); });
  EXPECT_EQ(this->runner.run(describe(oneShot)), "error: broken");
}

TYPED_TEST(OneShotOnScheduler, RefusesEveryCompletionAfterTheFirst) {
  OneShot<std::string> oneShot;
  EXPECT_FALSE(oneShot.isComplete());
  EXPECT_TRUE(oneShot.resume("first"));
  EXPECT_TRUE(oneShot.isComplete());
  EXPECT_FALSE(oneShot.resume("second"));
  EXPECT_FALSE(oneShot.resolver().fail(std::runtime_error("third")));
  EXPECT_EQ(this->runner.run(describe(oneShot)), "first");
}

TYPED_TEST(OneShotOnScheduler, FailsTheWaitWhenTheLastResolverGoes) {
  OneShot<std::string> oneShot;
  {
    auto resolver = oneShot.resolver();
    this->runner.scheduler().post([copy = resolver] {});
  }
  EXPECT_EQ(this->runner.run(describe(oneShot)), "error: The operation was abandoned before it completed");
}

TYPED_TEST(OneShotOnScheduler, CancelsAWaitByItsStopToken) {
  OneShot<std::string> oneShot;
  std::stop_source stop;
  this->runner.scheduler().post([&stop] { stop.request_stop(); });
  EXPECT_EQ(this->runner.run(describe(oneShot), stop.get_token()), "error: The task was cancelled");
  EXPECT_FALSE(oneShot.resume("too late"));
}

TYPED_TEST(OneShotOnScheduler, CancelsAWaitThatBeginsAfterTheStopRequest) {
  OneShot<std::string> oneShot;
  std::stop_source stop;
  stop.request_stop();
  EXPECT_EQ(this->runner.run(describe(oneShot), stop.get_token()), "error: The task was cancelled");
}

TYPED_TEST(OneShotOnScheduler, GivesAValueThatCameBeforeTheStopRequest) {
  OneShot<std::string> oneShot;
  std::stop_source stop;
  oneShot.resume("value");
  stop.request_stop();
  EXPECT_EQ(this->runner.run(describe(oneShot), stop.get_token()), "value");
}

TYPED_TEST(OneShotOnScheduler, LooksAtNoStopTokenWhenToldToWaitThroughCancellation) {
  OneShot<std::string> oneShot;
  std::stop_source stop;
  stop.request_stop();
  this->runner.scheduler().post([resolver = oneShot.resolver()] { resolver.resume("answer"); });
  auto body = [](OneShot<std::string>& on) -> Task<std::string> { co_return co_await on.waitThroughCancellation(); };
  EXPECT_EQ(this->runner.run(body(oneShot), stop.get_token()), "answer");
}

TYPED_TEST(OneShotOnScheduler, ResumesItsWaiterOnTheStrandOnWhichItSuspended) {
  const Strand strand(this->runner.scheduler());
  OneShot<int> oneShot;
  this->runner.scheduler().post([resolver = oneShot.resolver()] { resolver.resume(1); });
  auto body = [](Strand home, OneShot<int>& on) -> Task<bool> {
    const int value = co_await on.wait();
    co_return value == 1 && home.isCurrent();
  };
  EXPECT_TRUE(this->runner.run(body(strand, oneShot).onStrand(strand)));
}

TEST(OneShot, NeverResumesItsWaiterWithinTheCallThatCompletesIt) {
  underSeeds(50, [](SimulatedScheduler& scheduler) {
    const Strand strand(scheduler);
    OneShot<int> oneShot;
    bool resumed = false;
    auto body = [](OneShot<int>& on, bool& flag) -> Task<void> {
      co_await on.wait();
      flag = true;
    };
    body(oneShot, resumed).onStrand(strand).detach();
    scheduler.run();
    strand.post([&] {
      oneShot.resume(1);
      EXPECT_FALSE(resumed);
    });
    scheduler.run();
    EXPECT_TRUE(resumed);
  });
}

TEST(OneShot, HasOneWinnerInEveryOrderOfValueErrorCancellationAndLoss) {
  std::set<std::string> outcomes;
  underSeeds(5000, [&outcomes](SimulatedScheduler& scheduler) {
    const Strand waiterStrand(scheduler, "waiter");
    const Strand otherStrand(scheduler, "other");
    std::optional<OneShot<std::string>> oneShot;
    oneShot.emplace("raced");
    std::stop_source stop;
    int winners = 0;
    std::string outcome;
    auto wait = [](OneShot<std::string> on, std::string& into) -> Task<void> { into = co_await describe(on); };
    std::optional<OneShotResolver<std::string>> value = oneShot->resolver();
    std::optional<OneShotResolver<std::string>> error = oneShot->resolver();
    std::optional<OneShotResolver<std::string>> dropped = oneShot->resolver();
    const bool providersVanish = scheduler.choose(3) == 0;

    wait(std::move(*oneShot), outcome).onStrand(waiterStrand).withStopToken(stop.get_token()).detach();
    const auto delay = [&] { return std::chrono::nanoseconds(scheduler.choose(2)); };
    const auto valueTimer = otherStrand.postAfter(delay(), [&] {
      if (!providersVanish && value->resume("value")) ++winners;
      value.reset();
    });
    const auto errorTimer = scheduler.postAfter(delay(), [&] {
      if (!providersVanish && error->fail(std::runtime_error("error"))) ++winners;
      error.reset();
    });
    const auto dropTimer = scheduler.postAfter(delay(), [&] { dropped.reset(); });
    const auto stopTimer = scheduler.postAfter(delay(), [&] { stop.request_stop(); });
    const auto destroyTimer = waiterStrand.postAfter(delay(), [&] { oneShot.reset(); });
    scheduler.run();

    const bool byProvider = outcome == "value" || outcome == "error: error";
    EXPECT_EQ(winners, byProvider ? 1 : 0) << outcome;
    EXPECT_FALSE(outcome.empty()) << scheduler.pending();
    outcomes.insert(outcome);
  });
  EXPECT_EQ(outcomes, (std::set<std::string>{"value", "error: error", "error: The task was cancelled",
                                             "error: The operation was abandoned before it completed"}));
}

TEST(OneShot, ForgetsAWaiterThatIsDestroyedInEveryOrderWithItsCompletion) {
  std::set<bool> endings;
  underSeeds(2000, [&endings](SimulatedScheduler& scheduler) {
    const Strand strand(scheduler);
    OneShot<std::shared_ptr<int>> oneShot;
    auto value = std::make_shared<int>(1);
    bool resumed = false;
    auto wait = [](OneShot<std::shared_ptr<int>>& on, bool& flag) -> testing::OwnedForeignCoroutine {
      const auto got = co_await on.wait();
      flag = got != nullptr;
    };
    std::optional<testing::OwnedForeignCoroutine> waiter;
    bool won = false;
    strand.post([&] { waiter.emplace(wait(oneShot, resumed)); });
    scheduler.run();
    scheduler.post([&, resolver = oneShot.resolver()] { won = resolver.resume(value); });
    scheduler.post([&] { strand.post([&] { waiter->destroy(); }); });
    scheduler.run();
    EXPECT_TRUE(won);
    EXPECT_EQ(scheduler.pending().find("[one-shot]"), std::string::npos);
    endings.insert(resumed);
  });
  EXPECT_EQ(endings, (std::set<bool>{false, true}));
}

TEST(OneShot, HasOneWinnerAmongRealThreadsAndDeliversWhatItWrote) {
  testing::Production runner;
  constexpr int rounds = 2000;
  for (int round = 0; round < rounds; ++round) {
    OneShot<std::string> oneShot;
    std::stop_source stop;
    std::atomic<int> winners = 0;
    std::atomic<int> ready = 0;
    const auto atOnce = [&ready](auto action) {
      return [&ready, action] {
        for (++ready; ready < 3;) std::this_thread::yield();
        action();
      };
    };
    const Strand strand(runner.scheduler());
    const auto outcome = startOn(runner.scheduler(), describe(oneShot).onStrand(strand), stop.get_token());
    std::array<std::thread, 3> threads{
        std::thread(atOnce([&winners, resolver = oneShot.resolver()] { winners += resolver.resume("value") ? 1 : 0; })),
        std::thread(atOnce([&winners, resolver = oneShot.resolver()] {
          winners += resolver.fail(std::runtime_error("error")) ? 1 : 0;
        })),
        std::thread(atOnce([&stop] { stop.request_stop(); }))};
    for (auto& thread : threads) thread.join();
    outcome->waitUntilSet();
    const auto text = outcome->take();
    ASSERT_EQ(winners, text == "error: The task was cancelled" ? 0 : 1) << text;
  }
}

}  // namespace
}  // namespace ormel
