#include "OrmelSDK/Concurrency/WithTimeout.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Concurrency/Sleep.h"
#include "OrmelSDK/Concurrency/Strand.h"
#include "OrmelSDK/Concurrency/TaskGroup.h"
#include "OrmelSDK/Concurrency/WhenAll.h"
#include "Support/ConcurrencySchedulers.h"

namespace ormel {
namespace {

using std::chrono::milliseconds;
using testing::BothSchedulers;
using testing::startOn;
using testing::underSeeds;

Task<int> sevenAfter(milliseconds delay) {
  co_await sleepFor(delay);
  co_return 7;
}

/// Needs `delay` to end after it was stopped, and says so.
Task<int> endSlowly(milliseconds delay, bool& hasEnded) {
  try {
    co_await sleepFor(milliseconds(60'000));
  } catch (const CancelledError&) {
  }
  auto rest = sleepFor(delay).withStopToken({});
  co_await std::move(rest);
  hasEnded = true;
  co_return 8;
}

template <typename Runner>
class WithTimeout : public ::testing::Test {
 protected:
  Runner runner;
};
TYPED_TEST_SUITE(WithTimeout, BothSchedulers);

TYPED_TEST(WithTimeout, GivesTheValueOfATaskThatEndsInTime) {
  EXPECT_EQ(this->runner.run(withTimeout(sevenAfter(milliseconds(1)), milliseconds(60'000))), 7);
  this->runner.run(withTimeout(sleepFor(milliseconds(1)), milliseconds(60'000)));
  int number = 0;
  auto refer = [](int& target) -> Task<int&> { co_return target; };
  int& same = this->runner.run(withTimeout(refer(number), milliseconds(60'000)));
  EXPECT_EQ(&same, &number);
}

TYPED_TEST(WithTimeout, PassesAFailureOn) {
  auto fail = []() -> Task<int> {
    co_await sleepFor(milliseconds(1));
    throw std::runtime_error("its own");
  };
  EXPECT_THROW(this->runner.run(withTimeout(fail(), milliseconds(60'000))), std::runtime_error);
}

TYPED_TEST(WithTimeout, StopsALateTaskAndAwaitsItsEnd) {
  bool hasEnded = false;
  try {
    this->runner.run(withTimeout(endSlowly(milliseconds(3), hasEnded), milliseconds(2)));
    ADD_FAILURE() << "the time was not up";
  } catch (const TimeoutError& error) {
    EXPECT_STREQ(error.what(), "Timed out after 0.002 seconds");
    EXPECT_EQ(error.duration(), milliseconds(2));
    EXPECT_TRUE(error.isRetryable());
    EXPECT_FALSE(error.isAborted());
  }
  EXPECT_TRUE(hasEnded);
}

TYPED_TEST(WithTimeout, LetsTheCallersCancellationThrough) {
  std::stop_source stop;
  stop.request_stop();
  EXPECT_THROW(this->runner.run(withTimeout(sevenAfter(milliseconds(60'000)), milliseconds(50'000)), stop.get_token()),
               CancelledError);
}

TYPED_TEST(WithTimeout, NeverStopsATaskThatEndsWithoutAWait) {
  auto seven = []() -> Task<int> { co_return 7; };
  for (const auto duration : {milliseconds(-1), milliseconds(0), milliseconds(1)}) {
    EXPECT_EQ(this->runner.run(withTimeout(seven(), duration)), 7);
  }
}

TYPED_TEST(WithTimeout, RunsManyTimesAtConstantStackDepth) {
  auto seven = []() -> Task<int> { co_return 7; };
  auto loop = [&seven]() -> Task<int> {
    int sum = 0;
    for (int i = 0; i < 100'000; ++i) {
      auto timed = withTimeout(seven(), milliseconds(60'000));
      sum += co_await std::move(timed);
    }
    co_return sum;
  };
  EXPECT_EQ(this->runner.run(loop()), 700'000);
}

TYPED_TEST(WithTimeout, StopsATaskWithATokenOfItsOwn) {
  std::stop_source own;
  EXPECT_THROW(
      this->runner.run(withTimeout(sevenAfter(milliseconds(60'000)).withStopToken(own.get_token()), milliseconds(1))),
      TimeoutError);
  own.request_stop();
  EXPECT_THROW(this->runner.run(
                   withTimeout(sevenAfter(milliseconds(60'000)).withStopToken(own.get_token()), milliseconds(50'000))),
               CancelledError);
}

TEST(WithTimeoutOnASimulation, IsUpAfterItsDurationAndNotBefore) {
  const struct {
    int task;
    int limit;
    int ends;
    bool isInTime;
  } rows[] = {{10, 11, 10, true}, {10, 9, 9, false}, {1, 60'000, 1, true}, {60'000, 0, 0, false}, {5, -5, 0, false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.limit);
    SimulatedScheduler scheduler(1);
    const auto outcome = startOn(scheduler, withTimeout(sevenAfter(milliseconds(row.task)), milliseconds(row.limit)));
    scheduler.runUntil([&] { return outcome->isSet(); });
    EXPECT_EQ(scheduler.now(), static_cast<std::uint64_t>(row.ends) * 1'000'000U);
    if (row.isInTime) {
      EXPECT_EQ(outcome->take(), 7);
    } else {
      EXPECT_THROW(outcome->take(), TimeoutError);
    }
    scheduler.run();
    EXPECT_EQ(scheduler.now(), static_cast<std::uint64_t>(row.ends) * 1'000'000U) << "a timer is left";
  }
}

TEST(WithTimeoutOnASimulation, KeepsTheCancellationWhenTheTimeRunsOutDuringTheEnd) {
  testing::Simulated runner;
  std::stop_source stop;
  stop.request_stop();
  bool hasEnded = false;
  EXPECT_EQ(runner.run(withTimeout(endSlowly(milliseconds(20), hasEnded), milliseconds(10)), stop.get_token()), 8);
  EXPECT_TRUE(hasEnded);
}

TEST(WithTimeoutOnASimulation, ResumesOnItsStrand) {
  underSeeds(30, [](SimulatedScheduler& scheduler) {
    auto body = [](Scheduler& on) -> Task<void> {
      const Strand strand(on);
      co_await strand.enter();
      std::optional<TimeoutError> failure;
      try {
        auto timed = withTimeout(sevenAfter(milliseconds(10)).onScheduler(on), milliseconds(5));
        co_await std::move(timed);
      } catch (const TimeoutError& error) {
        failure = error;
      }
      EXPECT_TRUE(failure);
      EXPECT_TRUE(strand.isCurrent());
    };
    const auto outcome = startOn(scheduler, body(scheduler));
    scheduler.run();
    EXPECT_TRUE(outcome->isSet());
  });
}

// The end of the task, the time-out and the caller's cancellation meet at one moment.
TEST(WithTimeoutOnASimulation, HasOneOutcomeInWhateverOrderItsEventsCome) {
  int values = 0;
  int timeouts = 0;
  int cancellations = 0;
  underSeeds(600, [&](SimulatedScheduler& scheduler) {
    std::stop_source stop;
    auto late = [](SimulatedScheduler& on) -> Task<int> {
      co_await sleepFor(milliseconds(1));
      if (on.choose(2) == 0) {
        auto shielded = sleepFor(milliseconds(on.choose(2))).withStopToken({});
        co_await std::move(shielded);
      }
      co_return 7;
    };
    const auto outcome = startOn(scheduler, withTimeout(late(scheduler), milliseconds(1)), stop.get_token());
    const Timer cancel = scheduler.postAfter(milliseconds(1), [&] { stop.request_stop(); });
    scheduler.run();
    ASSERT_TRUE(outcome->isSet());
    try {
      EXPECT_EQ(outcome->take(), 7);
      ++values;
    } catch (const TimeoutError&) {
      ++timeouts;
    } catch (const CancelledError&) {
      ++cancellations;
    }
  });
  EXPECT_GT(values, 0);
  EXPECT_GT(timeouts, 0);
  EXPECT_GT(cancellations, 0);
}

TEST(WithTimeoutOnThreads, HasOneOutcomeWhenTaskAndTimerMeet) {
  int values = 0;
  int timeouts = 0;
  for (int round = 0; round < 400; ++round) {
    std::vector<Task<int>> tasks;
    for (int i = 0; i < 8; ++i) {
      auto quiet = [](bool onPool) -> Task<int> {
        auto timed = withTimeout(
            onPool ? sevenAfter(milliseconds(1)).onScheduler(productionScheduler()) : sevenAfter(milliseconds(1)),
            milliseconds(1));
        try {
          co_return co_await std::move(timed);
        } catch (const TimeoutError&) {
        }
        co_return 0;
      };
      tasks.push_back(quiet(i % 2 == 0));
    }
    for (const int value : whenAll(std::move(tasks)).get()) ++(value == 7 ? values : timeouts);
  }
  EXPECT_EQ(values + timeouts, 3200);
}

TEST(TimeoutError, SaysTheTimeInSeconds) {
  const struct {
    std::chrono::nanoseconds duration;
    const char* text;
  } rows[] = {{std::chrono::seconds(1), "Timed out after 1 second"},
              {std::chrono::seconds(90), "Timed out after 90 seconds"},
              {milliseconds(2500), "Timed out after 2.5 seconds"},
              {std::chrono::nanoseconds(1), "Timed out after 0.000000001 seconds"},
              {std::chrono::nanoseconds(0), "Timed out after 0 seconds"},
              {milliseconds(-3), "Timed out after 0 seconds"}};
  for (const auto& row : rows) EXPECT_STREQ(TimeoutError(row.duration).what(), row.text);
}

TEST(SleepFor, TakesTheSchedulerOnWhichItBegins) {
  SimulatedScheduler scheduler(1);
  const auto slept = startOn(scheduler, sleepFor(std::chrono::hours(1)));
  scheduler.runUntil([&] { return slept->isSet(); });
  EXPECT_EQ(scheduler.now(), 3'600'000'000'000U);
  const auto before = productionScheduler().now();
  sleepFor(milliseconds(2)).get();
  EXPECT_GE(productionScheduler().now() - before, 2'000'000U);
}

TEST(TaskGroup, AwaitsAndCancelsItsTasks) {
  underSeeds(30, [](SimulatedScheduler& scheduler) {
    auto body = [](int& ended) -> Task<void> {
      TaskGroup group;
      auto member = [](int& ends, milliseconds delay) -> Task<void> {
        try {
          co_await sleepFor(delay);
          ends += 1;
        } catch (const CancelledError&) {
          ends += 10;
          throw;
        }
      };
      group.spawn(member(ended, milliseconds(1)));
      group.spawn(member(ended, milliseconds(2)));
      co_await group.join();
      EXPECT_EQ(ended, 2);
      group.spawn(member(ended, milliseconds(60'000)));
      group.cancel();
      co_await group.join();
      EXPECT_EQ(ended, 12);
    };
    int ended = 0;
    const auto outcome = startOn(scheduler, body(ended));
    scheduler.run();
    ASSERT_TRUE(outcome->isSet());
    EXPECT_EQ(ended, 12);
    EXPECT_LT(scheduler.now(), 60'000'000'000U);
  });
}

}  // namespace
}  // namespace ormel
