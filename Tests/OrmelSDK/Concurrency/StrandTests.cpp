#include "OrmelSDK/Concurrency/Strand.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Concurrency/Sleep.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "Support/ConcurrencySchedulers.h"

namespace ormel {
namespace {

using testing::startOn;
using testing::underSeeds;

template <typename Runner>
class StrandOnScheduler : public ::testing::Test {
 protected:
  Runner runner;
};
TYPED_TEST_SUITE(StrandOnScheduler, testing::BothSchedulers);

TYPED_TEST(StrandOnScheduler, RunsItsWorkInTheOrderOfPosting) {
  const Strand strand(this->runner.scheduler());
  OneShot<void> done;
  std::vector<int> order;
  std::vector<int> expected;
  for (int i = 0; i < 1000; ++i) {
    strand.post([&order, i] { order.push_back(i); });
    expected.push_back(i);
  }
  strand.post([resolver = done.resolver()] { resolver.resume(); });
  auto wait = [](OneShot<void>& end) -> Task<void> { co_await end.wait(); };
  this->runner.run(wait(done));
  EXPECT_EQ(order, expected);
}

TYPED_TEST(StrandOnScheduler, IsCurrentOnlyInsideItsPieces) {
  const Strand strand(this->runner.scheduler());
  const Strand other(this->runner.scheduler());
  auto body = [](Strand home, Strand away) -> Task<bool> {
    const bool before = home.isCurrent();
    co_await home.enter();
    const bool inside = home.isCurrent() && !away.isCurrent();
    co_await away.enter();
    co_return !before && inside && away.isCurrent() && !home.isCurrent();
  };
  EXPECT_TRUE(this->runner.run(body(strand, other)));
  EXPECT_FALSE(strand.isCurrent());
}

TYPED_TEST(StrandOnScheduler, LetsItsQueuedWorkGoFirstOnYieldButNotOnEnter) {
  const Strand strand(this->runner.scheduler());
  auto body = [](Strand home) -> Task<std::string> {
    std::string order;
    home.post([&order] { order += "posted "; });
    co_await home.enter();
    order += "entered ";
    co_await home.yield();
    order += "yielded";
    co_return order;
  };
  EXPECT_EQ(this->runner.run(body(strand).onStrand(strand)), "entered posted yielded");
}

TYPED_TEST(StrandOnScheduler, RunsQueuedWorkAlsoWhenAllItsHandlesAreGone) {
  OneShot<void> done;
  std::optional<Strand> strand(std::in_place, this->runner.scheduler());
  strand->post([resolver = done.resolver()] { resolver.resume(); });
  strand.reset();
  auto wait = [](OneShot<void>& end) -> Task<void> { co_await end.wait(); };
  this->runner.run(wait(done));
}

TYPED_TEST(StrandOnScheduler, MayBeGivenUpByItsOwnPiece) {
  OneShot<void> done;
  auto strand = std::make_shared<std::optional<Strand>>(std::in_place, this->runner.scheduler());
  (*strand)->post([strand, resolver = done.resolver()] {
    strand->reset();
    resolver.resume();
  });
  strand.reset();
  auto wait = [](OneShot<void>& end) -> Task<void> { co_await end.wait(); };
  this->runner.run(wait(done));
}

TYPED_TEST(StrandOnScheduler, KeepsAWaitingCoroutineResumableWhenAllItsHandlesAreGone) {
  OneShot<int> oneShot;
  auto body = [](OneShot<int>& on) -> Task<int> { co_return co_await on.wait(); };
  auto task = body(oneShot).onStrand(Strand(this->runner.scheduler()));
  const auto timer =
      this->runner.scheduler().postAfter(std::chrono::milliseconds(1), [r = oneShot.resolver()] { r.resume(4); });
  EXPECT_EQ(this->runner.run(std::move(task)), 4);
}

TEST(Strand, InterleavesWithOtherStrandsInAnOrderThatTheSeedChooses) {
  std::set<std::string> orders;
  underSeeds(500, [&orders](SimulatedScheduler& scheduler) {
    const Strand first(scheduler);
    const Strand second(scheduler);
    std::string order;
    for (const char letter : {'a', 'b', 'c'}) {
      first.post([&order, letter] { order += letter; });
      second.post([&order, letter] { order += static_cast<char>(letter - 'a' + 'A'); });
    }
    EXPECT_EQ(scheduler.run(), 6U) << "one piece is one step";
    std::string lower;
    std::string upper;
    for (const char letter : order) (letter >= 'a' ? lower : upper) += letter;
    EXPECT_EQ(lower, "abc");
    EXPECT_EQ(upper, "ABC");
    orders.insert(order);
  });
  EXPECT_EQ(orders.size(), 20U) << "all interleavings of two sequences of three";
}

TEST(Strand, RunsOnePieceAtATimeInEveryOrderOfAwaitsInside) {
  std::set<std::vector<int>> traces;
  underSeeds(1000, [&traces](SimulatedScheduler& scheduler) {
    const Strand strand(scheduler);
    int inside = 0;
    std::vector<int> trace;
    scheduler.setStepHook([&] { EXPECT_EQ(inside, 0); });
    auto worker = [](Scheduler& on, Strand home, int& count, std::vector<int>& seen, int number) -> Task<void> {
      for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(home.isCurrent());
        EXPECT_EQ(++count, 1);
        seen.push_back(number);
        --count;
        if (i == 0) {
          co_await sleepFor(on, std::chrono::nanoseconds(1));
        } else {
          co_await home.yield();
        }
      }
    };
    for (int number = 0; number < 3; ++number) {
      worker(scheduler, strand, inside, trace, number).onStrand(strand).detach();
    }
    scheduler.run();
    EXPECT_EQ(trace.size(), 9U);
    traces.insert(trace);
  });
  EXPECT_GT(traces.size(), 3U);
}

TEST(Strand, GivesWayToOtherWorkOfItsScheduler) {
  const Strand busy(productionScheduler());
  std::atomic<bool> stop = false;
  auto spin = [](Strand on, std::atomic<bool>& end) -> Task<void> {
    while (!end) co_await on.yield();
  };
  const auto first = startOn(productionScheduler(), spin(busy, stop));
  std::vector<std::shared_ptr<testing::Outcome<void>>> others;
  for (int i = 0; i < 8; ++i)
    others.push_back(startOn(productionScheduler(), spin(Strand(productionScheduler()), stop)));
  testing::Production().run([]() -> Task<void> { co_return; }());
  stop = true;
  first->waitUntilSet();
  for (const auto& other : others) other->waitUntilSet();
}

TEST(Strand, KeepsTheOrderOfEachOfManyProducerThreads) {
  constexpr int producers = 4;
  constexpr int each = 20'000;
  const Strand strand(productionScheduler());
  std::vector<int> next(producers, 0);
  int unordered = 0;
  OneShot<void> done;
  int left = producers * each;
  const auto resolver = done.resolver();
  std::vector<std::thread> threads;
  for (int producer = 0; producer < producers; ++producer) {
    threads.emplace_back([&, producer] {
      for (int i = 0; i < each; ++i) {
        strand.post([&, producer, i] {
          if (next[static_cast<std::size_t>(producer)]++ != i) ++unordered;
          if (--left == 0) resolver.resume();
        });
      }
    });
  }
  auto wait = [](OneShot<void>& end) -> Task<void> { co_await end.wait(); };
  testing::Production().run(wait(done));
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(unordered, 0);
}

TEST(Strand, GuardsPlainDataOfCoroutinesThatAwaitOnManyThreads) {
  constexpr int workers = 8;
  constexpr int turns = 2'000;
  const Strand strand(productionScheduler());
  int plain = 0;
  auto worker = [](Strand home, Strand away, int& counter) -> Task<void> {
    for (int i = 0; i < turns; ++i) {
      co_await home.enter();
      ++counter;
      co_await away.enter();
    }
  };
  std::vector<std::shared_ptr<testing::Outcome<void>>> outcomes;
  for (int i = 0; i < workers; ++i) {
    outcomes.push_back(startOn(productionScheduler(), worker(strand, Strand(productionScheduler()), plain)));
  }
  for (const auto& outcome : outcomes) outcome->waitUntilSet();
  auto read = [](Strand home, int& counter) -> Task<int> {
    co_await home.enter();
    co_return counter;
  };
  EXPECT_EQ(testing::Production().run(read(strand, plain)), workers * turns);
}

/// Enters the strand and records that it did.
Task<void> reportFrom(Strand strand, std::shared_ptr<std::promise<void>> entered) {
  co_await strand.enter();
  entered->set_value();
}

bool comesSoon(std::promise<void>& promise) {
  return promise.get_future().wait_for(testing::patience) == std::future_status::ready;
}

TEST(StrandAmongRealThreads, RunsWhatACoroutineHasStartedWhileThatOneRunsOn) {
  const Strand strand(productionScheduler());
  auto startAndRunOn = [](Strand other, bool leavesFirst) -> Task<bool> {
    const Strand own(other.scheduler());
    if (leavesFirst) co_await own.enter();
    const auto entered = std::make_shared<std::promise<void>>();
    reportFrom(other, entered).detach();
    co_return comesSoon(*entered);
  };
  for (const bool leavesFirst : {false, true}) {
    EXPECT_TRUE(testing::Production().run(startAndRunOn(strand, leavesFirst))) << leavesFirst;
  }
}

TEST(StrandAmongRealThreads, RunsWhatAPieceOfWorkHasStartedWhileThatOneRunsOn) {
  const Strand strand(productionScheduler());
  const Strand own(productionScheduler());
  std::promise<bool> came;
  own.post([&came, strand] {
    const auto entered = std::make_shared<std::promise<void>>();
    reportFrom(strand, entered).detach();
    came.set_value(comesSoon(*entered));
  });
  EXPECT_TRUE(came.get_future().get());
}

}  // namespace
}  // namespace ormel
