#include "OrmelSDK/Concurrency/WhenAll.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Concurrency/Sleep.h"
#include "OrmelSDK/Concurrency/Strand.h"
#include "OrmelSDK/Concurrency/WhenAny.h"
#include "Support/ConcurrencySchedulers.h"

namespace ormel {
namespace {

using std::chrono::milliseconds;
using testing::BothSchedulers;
using testing::startOn;
using testing::underSeeds;

/// The fate of a task.
struct Fate {
  bool hasBegun = false;
  bool hasEnded = false;
  bool wasCancelled = false;
};

Task<std::string> after(milliseconds delay, std::string value, Fate* fate = nullptr) {
  Fate own;
  if (!fate) fate = &own;
  fate->hasBegun = true;
  try {
    co_await sleepFor(delay);
  } catch (const CancelledError&) {
    fate->wasCancelled = true;
    fate->hasEnded = true;
    throw;
  }
  fate->hasEnded = true;
  co_return value;
}

Task<int> failAfter(milliseconds delay, std::string message) {
  co_await sleepFor(delay);
  throw std::runtime_error(message);
}

/// Takes its time after it was told to stop.
Task<int> stopSlowly(milliseconds delay, bool& hasEnded) {
  try {
    co_await sleepFor(milliseconds(1000));
  } catch (const CancelledError&) {
  }
  auto rest = sleepFor(delay).withStopToken({});
  co_await std::move(rest);
  hasEnded = true;
  co_return 1;
}

template <typename Work>
std::string failureOf(Work work) {
  try {
    work();
    return "no failure";
  } catch (const std::exception& error) {
    return error.what();
  }
}

template <typename Runner>
class WhenAll : public ::testing::Test {
 protected:
  Runner runner;
};
TYPED_TEST_SUITE(WhenAll, BothSchedulers);

TYPED_TEST(WhenAll, GivesAllValuesInTheOrderOfTheTasks) {
  int number = 1;
  auto refer = [](int& target) -> Task<int&> {
    co_await sleepFor(milliseconds(1));
    co_return target;
  };
  auto own = []() -> Task<std::unique_ptr<int>> { co_return std::make_unique<int>(7); };
  auto [text, nothing, reference, pointer] =
      this->runner.run(whenAll(after(milliseconds(5), "late"), sleepFor(milliseconds(2)), refer(number), own()));
  EXPECT_EQ(text, "late");
  static_assert(std::is_same_v<decltype(nothing), std::monostate>);
  reference.get() = 3;
  EXPECT_EQ(number, 3);
  EXPECT_EQ(*pointer, 7);
}

TYPED_TEST(WhenAll, GivesNothingForTasksWithoutValues) {
  static_assert(std::is_same_v<decltype(whenAll(sleepFor(milliseconds(1)), sleepFor(milliseconds(1)))), Task<void>>);
  this->runner.run(whenAll(sleepFor(milliseconds(1)), sleepFor(milliseconds(1))));
  this->runner.run(whenAll());
  std::vector<Task<void>> tasks;
  this->runner.run(whenAll(std::move(tasks)));
}

TYPED_TEST(WhenAll, GivesAVectorForAVector) {
  std::vector<Task<std::string>> tasks;
  for (int i = 0; i < 20; ++i) tasks.push_back(after(milliseconds(20 - i), std::to_string(i)));
  const auto values = this->runner.run(whenAll(std::move(tasks)));
  ASSERT_EQ(values.size(), 20U);
  for (std::size_t i = 0; i < 20; ++i) EXPECT_EQ(values[i], std::to_string(i));
}

TYPED_TEST(WhenAll, ThrowsTheFirstFailureWhenTheOthersHaveEnded) {
  bool hasEnded = false;
  EXPECT_EQ(failureOf([&] {
              this->runner.run(whenAll(stopSlowly(milliseconds(5), hasEnded), failAfter(milliseconds(2), "first"),
                                       failAfter(milliseconds(900), "second")));
            }),
            "first");
  EXPECT_TRUE(hasEnded);
}

TYPED_TEST(WhenAll, PassesACancellationOn) {
  std::stop_source stop;
  std::stop_source later;
  auto cancel = [](std::stop_source source) -> Task<void> {
    co_await sleepFor(milliseconds(2));
    source.request_stop();
  };
  bool hasEnded = false;
  auto both = whenAll(stopSlowly(milliseconds(3), hasEnded), after(milliseconds(60'000), "never"),
                      cancel(stop).withStopToken(later.get_token()));
  EXPECT_THROW(this->runner.run(std::move(both), stop.get_token()), CancelledError);
  EXPECT_TRUE(hasEnded);
}

TYPED_TEST(WhenAll, RunsManyTimesAtConstantStackDepth) {
  auto number = [](int value) -> Task<int> { co_return value; };
  auto loop = [&number]() -> Task<int> {
    int sum = 0;
    for (int i = 0; i < 100'000; ++i) {
      auto both = whenAll(number(1), number(2));
      const auto [one, two] = co_await std::move(both);
      sum += one + two;
    }
    co_return sum;
  };
  EXPECT_EQ(this->runner.run(loop()), 300'000);
}

TEST(WhenAllOnASimulation, LastsAsLongAsItsLongestTask) {
  SimulatedScheduler scheduler(1);
  const auto both = startOn(scheduler, whenAll(after(milliseconds(30), "a"), after(milliseconds(50), "b")));
  scheduler.runUntil([&] { return both->isSet(); });
  EXPECT_EQ(scheduler.now(), 50'000'000U);
}

TEST(WhenAllOnASimulation, DoesNotBeginATaskAfterAFailure) {
  testing::Simulated runner;
  auto fail = []() -> Task<int> {
    throw std::runtime_error("at once");
    co_return 1;
  };
  Fate before;
  Fate behind;
  EXPECT_EQ(failureOf([&] {
              runner.run(whenAll(after(milliseconds(1), "a", &before), fail(), after(milliseconds(1), "b", &behind)));
            }),
            "at once");
  EXPECT_TRUE(before.wasCancelled);
  EXPECT_FALSE(behind.hasBegun);
}

TEST(WhenAllOnASimulation, GivesTheValuesOfTasksThatIgnoreACancellation) {
  testing::Simulated runner;
  std::stop_source stop;
  stop.request_stop();
  auto ignore = []() -> Task<int> {
    auto sleep = sleepFor(milliseconds(3)).withStopToken({});
    co_await std::move(sleep);
    co_return 4;
  };
  const auto [one, two] = runner.run(whenAll(ignore(), ignore()), stop.get_token());
  EXPECT_EQ(one + two, 8);
}

TEST(WhenAllOnASimulation, ResumesOnItsStrandWhereverItsTasksEnd) {
  underSeeds(50, [](SimulatedScheduler& scheduler) {
    auto body = [](Scheduler& on) -> Task<int> {
      int sum = 0;
      {
        const Strand home(on);
        const Strand away(on);
        auto onStrands = [](Strand own, Strand other) -> Task<int> {
          auto elsewhere = [](Strand here) -> Task<int> {
            co_await here.enter();
            co_await sleepFor(milliseconds(1));
            co_return 2;
          };
          auto both = whenAll(elsewhere(other), elsewhere(own), elsewhere(other).onStrand(other));
          const auto [a, b, c] = co_await std::move(both);
          EXPECT_TRUE(own.isCurrent());
          co_return a + b + c;
        };
        auto inner = onStrands(home, away).onStrand(home);
        sum = co_await std::move(inner);
      }
      EXPECT_EQ(detail::executionState().strand, nullptr);
      co_return sum;
    };
    const auto outcome = startOn(scheduler, body(scheduler));
    scheduler.run();
    ASSERT_TRUE(outcome->isSet());
    EXPECT_EQ(outcome->take(), 6);
  });
}

// Ends, failures and a cancellation of the caller fall on the same few moments, in every order that the seeds give.
TEST(WhenAllOnASimulation, AwaitsEveryTaskThatBeganInWhateverOrderTheyEnd) {
  underSeeds(400, [](SimulatedScheduler& scheduler) {
    std::stop_source stop;
    int begun = 0;
    int ended = 0;
    auto member = [](SimulatedScheduler& on, int& beginnings, int& ends) -> Task<int> {
      ++beginnings;
      struct Count {
        explicit Count(int& toCount) : count(toCount) {}
        ~Count() { ++count; }
        int& count;
      };
      const Count counted(ends);
      const auto kind = on.choose(4);
      co_await sleepFor(milliseconds(on.choose(3)));
      if (kind == 0) throw std::runtime_error("chosen");
      if (kind == 1) {
        auto shielded = sleepFor(milliseconds(on.choose(3))).withStopToken({});
        co_await std::move(shielded);
      }
      co_return 1;
    };
    std::vector<Task<int>> tasks;
    for (int i = 0; i < 5; ++i) tasks.push_back(member(scheduler, begun, ended));
    const auto outcome = startOn(scheduler, whenAll(std::move(tasks)), stop.get_token());
    const Timer cancel = scheduler.postAfter(milliseconds(scheduler.choose(4)), [&] { stop.request_stop(); });
    scheduler.runUntil([&] { return outcome->isSet(); });
    EXPECT_EQ(begun, ended);
    const std::string failure = failureOf([&] { EXPECT_EQ(outcome->take().size(), 5U); });
    EXPECT_TRUE(failure == "no failure" || failure == "chosen" || failure == CancelledError().what()) << failure;
    EXPECT_TRUE(failure != "no failure" || begun == 5);
  });
}

TEST(WhenAllOnThreads, CountsTasksThatEndOnManyThreads) {
  for (int round = 0; round < 300; ++round) {
    std::vector<Task<int>> tasks;
    for (int i = 0; i < 8; ++i) {
      auto member = [](int value) -> Task<int> {
        if (value == 5) throw std::runtime_error("five");
        co_await sleepFor(milliseconds(value % 2));
        co_return value;
      };
      tasks.push_back(member(i % 8 == 5 && round % 2 == 0 ? 5 : 1).onScheduler(productionScheduler()));
    }
    const std::string failure = failureOf([&] { EXPECT_EQ(whenAll(std::move(tasks)).get().size(), 8U); });
    EXPECT_EQ(failure, round % 2 == 0 ? "five" : "no failure");
  }
}

template <typename Runner>
class WhenAny : public ::testing::Test {
 protected:
  Runner runner;
};
TYPED_TEST_SUITE(WhenAny, BothSchedulers);

TYPED_TEST(WhenAny, GivesTheFirstAndStopsTheOthers) {
  Fate loser;
  const auto first = this->runner.run(whenAny(after(milliseconds(60'000), "late", &loser), sleepFor(milliseconds(1)),
                                              failAfter(milliseconds(500), "x")));
  EXPECT_EQ(first.index, 1U);
  EXPECT_EQ(first.value.index(), 1U);
  EXPECT_TRUE(loser.wasCancelled);
}

TYPED_TEST(WhenAny, GivesTheFirstOfAVector) {
  std::vector<Task<std::string>> tasks;
  for (int i = 0; i < 5; ++i) tasks.push_back(after(milliseconds(i == 3 ? 1 : 60'000), std::to_string(i)));
  const auto first = this->runner.run(whenAny(std::move(tasks)));
  EXPECT_EQ(first.index, 3U);
  EXPECT_EQ(first.value, "3");
}

TYPED_TEST(WhenAny, ThrowsTheFailureOfTheFirstWhenTheOthersHaveEnded) {
  bool hasEnded = false;
  EXPECT_EQ(failureOf([&] {
              this->runner.run(whenAny(stopSlowly(milliseconds(4), hasEnded), failAfter(milliseconds(1), "first")));
            }),
            "first");
  EXPECT_TRUE(hasEnded);
}

TYPED_TEST(WhenAny, RefusesAnEmptyVector) {
  EXPECT_EQ(failureOf([&] { this->runner.run(whenAny(std::vector<Task<int>>())); }),
            "The first of no tasks was asked for");
}

TYPED_TEST(WhenAny, IsCancelledWithItsTasks) {
  std::stop_source stop;
  stop.request_stop();
  Fate fate;
  EXPECT_THROW(this->runner.run(whenAny(after(milliseconds(60'000), "a", &fate), after(milliseconds(60'000), "b")),
                                stop.get_token()),
               CancelledError);
  EXPECT_TRUE(fate.wasCancelled);
}

TEST(WhenAnyOnASimulation, DoesNotBeginTasksBehindOneThatHasEnded) {
  testing::Simulated runner;
  auto one = []() -> Task<int> { co_return 1; };
  Fate behind;
  const auto first = runner.run(whenAny(one(), after(milliseconds(1), "b", &behind)));
  EXPECT_EQ(std::get<0>(first.value), 1);
  EXPECT_FALSE(behind.hasBegun);
}

TEST(WhenAnyOnASimulation, HasOneWinnerAmongTasksThatEndAtOnce) {
  std::size_t wins[3] = {};
  underSeeds(200, [&](SimulatedScheduler& scheduler) {
    const auto outcome = startOn(
        scheduler, whenAny(after(milliseconds(1), "0"), after(milliseconds(1), "1"), after(milliseconds(1), "2")));
    scheduler.runUntil([&] { return outcome->isSet(); });
    const auto first = outcome->take();
    EXPECT_EQ(first.index, first.value.index());
    std::visit([&](const std::string& value) { EXPECT_EQ(value, std::to_string(first.index)); }, first.value);
    ++wins[first.index];
  });
  for (const std::size_t count : wins) EXPECT_GT(count, 0U);
}

}  // namespace
}  // namespace ormel
