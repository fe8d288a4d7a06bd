#include "OrmelSDK/Concurrency/Scheduler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Concurrency/SimulatedScheduler.h"
#include "OrmelSDK/Concurrency/Strand.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "Support/ConcurrencySchedulers.h"

namespace ormel {
namespace {

using std::chrono::hours;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;
using testing::underSeeds;

Task<void> await(OneShot<void>& oneShot) { co_await oneShot.wait(); }

template <typename Runner>
class SchedulerOf : public ::testing::Test {
 protected:
  Runner runner;
};
TYPED_TEST_SUITE(SchedulerOf, testing::BothSchedulers);

TYPED_TEST(SchedulerOf, RunsPostedWorkWhereBlockingIsRefused) {
  OneShot<void> done;
  this->runner.scheduler().post([resolver = done.resolver()] {
    auto task = []() -> Task<void> { co_return; }();
    EXPECT_THROW(task.get(), WouldDeadlockError);
    resolver.resume();
  });
  this->runner.run(await(done));
}

TEST(SimulatedScheduler, RunsPostedWorkInAStepOfItsOwn) {
  SimulatedScheduler scheduler(1);
  int depth = 0;
  int ran = 0;
  const auto piece = [&](auto& self) -> void {
    EXPECT_EQ(++depth, 1);
    if (++ran < 10) scheduler.post([&self] { self(self); });
    --depth;
  };
  scheduler.post([&piece] { piece(piece); });
  EXPECT_EQ(scheduler.run(), 10U);
}

/// Bounds of a timer's deadline.
struct Deadline {
  std::uint64_t earliest;
  std::uint64_t latest;
};

/// Arms timers on a strand and records the order in which they ran.
class OrderOfTimers {
 public:
  OrderOfTimers(Scheduler& scheduler, std::size_t expected) : strand_(scheduler), left_(expected) {}

  Timer arm(nanoseconds delay) {
    auto deadline = std::make_shared<Deadline>();
    const auto span = static_cast<std::uint64_t>(delay.count());
    deadline->earliest = strand_.scheduler().now() + span;
    auto timer = strand_.postAfter(delay, [this, deadline] {
      order_.push_back(deadline);
      if (--left_ == 0) done_.resume();
    });
    deadline->latest = strand_.scheduler().now() + span;
    return timer;
  }
  Task<void> waitForAll() { co_await done_.wait(); }

  bool isByDeadline() const {
    for (std::size_t i = 1; i < order_.size(); ++i) {
      if (order_[i]->latest < order_[i - 1]->earliest) return false;
    }
    return true;
  }
  std::size_t size() const { return order_.size(); }

 private:
  Strand strand_;
  std::size_t left_;
  OneShot<void> done_;
  std::vector<std::shared_ptr<Deadline>> order_;
};

TYPED_TEST(SchedulerOf, RunsDelayedWorkInTheOrderOfItsDeadlines) {
  OrderOfTimers order(this->runner.scheduler(), 5);
  std::vector<Timer> timers;
  for (const int delay : {30, 10, 20, 40, 50}) timers.push_back(order.arm(milliseconds(delay)));
  this->runner.run(order.waitForAll());
  EXPECT_TRUE(order.isByDeadline());
  EXPECT_FALSE(timers.front().cancel()) << "it has run";
}

TYPED_TEST(SchedulerOf, NeverRunsACancelledTimer) {
  Scheduler& scheduler = this->runner.scheduler();
  OneShot<void> done;
  std::atomic<int> ran = 0;
  auto cancelled = scheduler.postAfter(milliseconds(1), [&ran] { ++ran; });
  {
    const auto dropped = scheduler.postAfter(milliseconds(1), [&ran] { ++ran; });
  }
  auto replaced = scheduler.postAfter(milliseconds(1), [&ran] { ++ran; });
  replaced = Timer();
  EXPECT_TRUE(cancelled.cancel());
  EXPECT_FALSE(cancelled.cancel());
  const auto later = scheduler.postAfter(milliseconds(5), [resolver = done.resolver()] { resolver.resume(); });
  this->runner.run(await(done));
  EXPECT_EQ(ran, 0);
}

TYPED_TEST(SchedulerOf, KeepsManyTimersInOrderWhileOthersAreCancelled) {
  OrderOfTimers order(this->runner.scheduler(), 250);
  std::vector<Timer> kept;
  std::vector<Timer> cancelled;
  for (int i = 0; i < 250; ++i) {
    const auto delay = milliseconds(100) + microseconds((i * 7919) % 500 * 50);
    kept.push_back(order.arm(delay));
    cancelled.push_back(this->runner.scheduler().postAfter(delay + seconds(60), [] { FAIL(); }));
  }
  for (auto& timer : cancelled) EXPECT_TRUE(timer.cancel());
  this->runner.run(order.waitForAll());
  EXPECT_EQ(order.size(), 250U);
  EXPECT_TRUE(order.isByDeadline());
}

TYPED_TEST(SchedulerOf, ReleasesWhatACancelledTimerHolds) {
  auto held = std::make_shared<int>(1);
  auto timer = this->runner.scheduler().postAfter(hours(1), [held] {});
  EXPECT_EQ(held.use_count(), 2);
  timer.cancel();
  EXPECT_EQ(held.use_count(), 1);
}

TYPED_TEST(SchedulerOf, TakesADelayBelowZeroForNone) {
  OneShot<void> done;
  const auto timer =
      this->runner.scheduler().postAfter(seconds(-1), [resolver = done.resolver()] { resolver.resume(); });
  this->runner.run(await(done));
}

TEST(Timer, TakesTheLongestDelayForNever) {
  auto timer = productionScheduler().postAfter(nanoseconds::max(), [] { FAIL(); });
  OneShot<void> done;
  const auto other =
      productionScheduler().postAfter(milliseconds(1), [resolver = done.resolver()] { resolver.resume(); });
  await(done).get();
  EXPECT_TRUE(timer.cancel());
}

TEST(Timer, CancelledOnItsStrandDoesNotRunThoughItIsDue) {
  std::set<bool> outcomes;
  underSeeds(500, [&outcomes](SimulatedScheduler& scheduler) {
    const Strand strand(scheduler);
    bool ran = false;
    bool cancelled = false;
    auto timer = strand.postAfter(nanoseconds(1), [&ran] { ran = true; });
    const auto canceller = strand.postAfter(nanoseconds(1), [&] {
      const bool ranBefore = ran;
      cancelled = timer.cancel();
      EXPECT_EQ(cancelled, !ranBefore);
    });
    scheduler.run();
    EXPECT_NE(ran, cancelled);
    outcomes.insert(ran);
  });
  EXPECT_EQ(outcomes.size(), 2U) << "both orders occur";
}

TEST(Timer, RunsOrIsCancelledButNeverBothAmongRealThreads) {
  for (int round = 0; round < 2000; ++round) {
    std::atomic<int> ran = 0;
    auto witness = std::make_shared<int>(0);
    auto timer = productionScheduler().postAfter(microseconds(round % 20), [&ran, witness] { ++ran; });
    std::this_thread::yield();
    if (!timer.cancel()) {
      while (witness.use_count() > 1) std::this_thread::yield();
      ASSERT_EQ(ran, 1);
    } else {
      while (witness.use_count() > 1) std::this_thread::yield();
      ASSERT_EQ(ran, 0);
    }
  }
}

std::string traceOf(std::uint64_t seed) {
  SimulatedScheduler scheduler(seed);
  const Strand first(scheduler);
  const Strand second(scheduler);
  std::string trace;
  auto worker = [](SimulatedScheduler& on, Strand strand, std::string& into, char letter) -> Task<void> {
    for (int i = 0; i < 10; ++i) {
      into += letter;
      const Timer timer = on.postAfter(nanoseconds(on.choose(3)), [&into] { into += '.'; });
      co_await strand.yield();
    }
  };
  for (const char letter : {'a', 'b', 'c'}) {
    worker(scheduler, letter == 'b' ? second : first, trace, letter).onStrand(letter == 'b' ? second : first).detach();
  }
  scheduler.run();
  return trace + "@" + std::to_string(scheduler.now()) + "/" + std::to_string(scheduler.steps());
}

TEST(SimulatedScheduler, ReplaysASeedExactly) {
  std::set<std::string> traces;
  for (std::uint64_t seed = 0; seed < 200; ++seed) {
    const auto trace = traceOf(seed);
    EXPECT_EQ(trace, traceOf(seed));
    traces.insert(trace);
  }
  EXPECT_GT(traces.size(), 150U);
}

TEST(SimulatedScheduler, DrawsTheSameNumbersOnEveryPlatform) {
  SimulatedScheduler scheduler(42);
  std::vector<std::uint64_t> drawn;
  for (int i = 0; i < 5; ++i) drawn.push_back(scheduler.choose(1000));
  EXPECT_EQ(drawn, (std::vector<std::uint64_t>{413, 291, 858, 764, 250}));
}

TEST(SimulatedScheduler, LetsTimeJumpToTheNextTimerOnlyWhenNothingIsReady) {
  SimulatedScheduler scheduler(1);
  std::vector<std::uint64_t> times;
  const auto long_ = scheduler.postAfter(seconds(120), [&] { times.push_back(scheduler.now()); });
  const auto short_ = scheduler.postAfter(seconds(30), [&] {
    times.push_back(scheduler.now());
    scheduler.post([&] { times.push_back(scheduler.now()); });
  });
  scheduler.post([&] { times.push_back(scheduler.now()); });
  EXPECT_EQ(scheduler.run(), 4U);
  EXPECT_EQ(times, (std::vector<std::uint64_t>{0, 30'000'000'000, 30'000'000'000, 120'000'000'000}));
}

TEST(SimulatedScheduler, RunsForATimeAndNotBeyond) {
  SimulatedScheduler scheduler(1);
  int ran = 0;
  const auto inside = scheduler.postAfter(seconds(2), [&] { ++ran; });
  const auto outside = scheduler.postAfter(seconds(3), [&] { ++ran; });
  scheduler.runFor(milliseconds(2500));
  EXPECT_EQ(ran, 1);
  EXPECT_EQ(scheduler.now(), 2'500'000'000U);
}

TEST(SimulatedScheduler, NamesWhatIsPendingWhenItStalls) {
  SimulatedScheduler scheduler(7);
  OneShot<void> answer("answer to turn/start");
  OneShot<void> other("never awaited");
  testing::startOn(scheduler, await(answer));
  try {
    scheduler.runUntil([] { return false; });
    FAIL() << "did not stall";
  } catch (const SimulationError& error) {
    EXPECT_STREQ(error.what(),
                 "The simulation has stalled: at 0 ns after 1 steps of seed 7; ready:; timers:; waiting: [answer to "
                 "turn/start]");
  }
  answer.resume();
  scheduler.run();
}

TEST(SimulatedScheduler, NamesWhatIsPendingWhenItDoesNotEnd) {
  SimulatedScheduler scheduler(7);
  const Strand strand(scheduler, "engine");
  const auto timer = scheduler.postAfter(seconds(1), [] {}, "liveness probe");
  bool stop = false;
  auto spin = [](Strand on, bool& end) -> Task<void> {
    while (!end) co_await on.yield();
  };
  spin(strand, stop).onStrand(strand).detach();
  try {
    scheduler.run(100);
    FAIL() << "did not give up";
  } catch (const SimulationError& error) {
    EXPECT_STREQ(error.what(),
                 "The simulation does not end: at 0 ns after 100 steps of seed 7; ready: [engine]; timers: [liveness "
                 "probe at 1000000000]; waiting:");
  }
  stop = true;
  scheduler.run();
}

TEST(SimulatedScheduler, TakesAsManyStepsAsTheLimitAllowsAndNoMore) {
  SimulatedScheduler scheduler(1);
  int ran = 0;
  const auto post = [&](int count) {
    for (int piece = 0; piece < count; ++piece) scheduler.post([&ran] { ++ran; });
  };
  post(3);
  EXPECT_EQ(scheduler.run(3), 3U);
  post(3);
  scheduler.runFor(seconds(1), 3);
  post(3);
  scheduler.runUntil([&ran] { return ran == 9; }, 3);
  EXPECT_EQ(scheduler.run(0), 0U);

  post(4);
  EXPECT_THROW(scheduler.run(3), SimulationError);
  EXPECT_EQ(ran, 12);
  EXPECT_THROW(scheduler.runFor(seconds(1), 0), SimulationError);
  EXPECT_EQ(ran, 12);
  EXPECT_EQ(scheduler.run(1), 1U);
}

TEST(SimulatedScheduler, CallsTheStepHookAfterEachStepAndPassesItsFailureOn) {
  SimulatedScheduler scheduler(1);
  int value = 0;
  scheduler.setStepHook([&value] {
    if (value == 3) throw std::runtime_error("broken promise");
  });
  for (int i = 0; i < 5; ++i) scheduler.post([&value] { ++value; });
  EXPECT_THROW(scheduler.run(), std::runtime_error);
  EXPECT_EQ(value, 3);
  scheduler.setStepHook(nullptr);
  scheduler.run();
  EXPECT_EQ(value, 5);
}

TEST(SimulatedScheduler, DiscardsQueuedWorkWhenItIsDestroyed) {
  auto held = std::make_shared<int>(1);
  {
    SimulatedScheduler scheduler(1);
    const Strand strand(scheduler);
    scheduler.post([held] {});
    strand.post([held] {});
    strand.post([held] {});
    const auto timer = scheduler.postAfter(seconds(1), [held] {});
    EXPECT_EQ(held.use_count(), 5);
  }
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace ormel
