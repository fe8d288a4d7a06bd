#include "OrmelSDK/LoopScheduler.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Concurrency/Sleep.h"
#include "OrmelSDK/Concurrency/Strand.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Concurrency/TaskGroup.h"
#include "OrmelSDK/Concurrency/WithTimeout.h"
#include "Support/Eventually.h"

namespace ormel {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::nanoseconds never = std::chrono::minutes(2);

/// Whether the scheduler's descriptor becomes readable in time.
bool becomesReadable(const LoopScheduler& loop, std::chrono::nanoseconds within = never) {
  pollfd watched{loop.descriptor(), POLLIN, 0};
  return ::poll(&watched, 1, static_cast<int>(within / 1ms)) == 1;
}
bool isReadable(const LoopScheduler& loop) { return becomesReadable(loop, 0ns); }

/// An application's loop, until something is true.
template <typename Condition>
void runUntil(LoopScheduler& loop, Condition&& reached) {
  const auto deadline = std::chrono::steady_clock::now() + never;
  while (!reached()) {
    if (std::chrono::steady_clock::now() > deadline) throw std::runtime_error("the loop has nothing to run");
    const auto next = loop.timeToNextTimer();
    becomesReadable(loop, std::min<std::chrono::nanoseconds>(next.value_or(never), never) + 1ms);
    loop.runReady();
  }
}

TEST(LoopScheduler, RunsWorkWithinRunReadyAlone) {
  LoopScheduler loop;
  std::vector<std::string> ran;
  EXPECT_FALSE(isReadable(loop));
  EXPECT_EQ(loop.runReady(), 0U);
  for (const char* name : {"first", "second"}) loop.post([&ran, name] { ran.emplace_back(name); });
  EXPECT_TRUE(ran.empty());
  EXPECT_TRUE(isReadable(loop));
  EXPECT_EQ(loop.timeToNextTimer(), 0ns);
  EXPECT_EQ(loop.runReady(), 2U);
  EXPECT_EQ(ran, (std::vector<std::string>{"first", "second"}));
  EXPECT_FALSE(isReadable(loop));
  EXPECT_EQ(loop.timeToNextTimer(), std::nullopt);
}

TEST(LoopScheduler, LeavesToTheNextCallWhatAPieceLeadsTo) {
  LoopScheduler loop;
  int ran = 0;
  std::function<void()> again = [&] {
    ++ran;
    loop.post([&] { again(); });
  };
  loop.post([&] { again(); });
  for (int calls = 1; calls <= 3; ++calls) {
    EXPECT_EQ(loop.runReady(), 1U);
    EXPECT_EQ(ran, calls);
    EXPECT_TRUE(isReadable(loop));
  }
}

TEST(LoopScheduler, RunsTheRestInALoopWithinAPiece) {
  LoopScheduler loop;
  std::vector<std::string> ran;
  loop.post([&] {
    ran.emplace_back("dialogue opens");
    EXPECT_TRUE(isReadable(loop));
    EXPECT_EQ(loop.runReady(), 2U);
    EXPECT_FALSE(isReadable(loop));
    EXPECT_TRUE(loop.isCurrent());
    ran.emplace_back("dialogue closes");
  });
  for (const char* name : {"second", "third"}) loop.post([&ran, name] { ran.emplace_back(name); });
  EXPECT_EQ(loop.runReady(), 1U);
  EXPECT_EQ(ran, (std::vector<std::string>{"dialogue opens", "second", "third", "dialogue closes"}));
  EXPECT_FALSE(loop.isCurrent());
}

TEST(LoopScheduler, LosesNothingThatOtherThreadsPost) {
  constexpr int threads = 8;
  constexpr int pieces = 2'000;
  LoopScheduler loop;
  int ran = 0;
  int elsewhere = 0;
  const auto here = std::this_thread::get_id();
  std::vector<std::jthread> posting;
  for (int index = 0; index < threads; ++index) {
    posting.emplace_back([&] {
      for (int piece = 0; piece < pieces; ++piece) {
        loop.post([&] {
          ++ran;
          if (std::this_thread::get_id() != here) ++elsewhere;
        });
      }
    });
  }
  while (ran < threads * pieces) {
    ASSERT_TRUE(becomesReadable(loop)) << "after " << ran;
    loop.runReady();
  }
  EXPECT_EQ(elsewhere, 0);
  EXPECT_FALSE(isReadable(loop));
}

TEST(LoopScheduler, TellsOfTheNextTimer) {
  LoopScheduler loop;
  std::vector<std::string> ran;
  const Timer late = loop.postAfter(1h, [&] { ran.emplace_back("late"); });
  EXPECT_GT(loop.timeToNextTimer(), 59min);
  EXPECT_TRUE(isReadable(loop)) << "a loop that sleeps without a limit must look again";
  EXPECT_EQ(loop.runReady(), 0U);
  EXPECT_FALSE(isReadable(loop));
  const Timer soon = loop.postAfter(1ms, [&] { ran.emplace_back("soon"); });
  runUntil(loop, [&] { return !ran.empty(); });
  EXPECT_EQ(ran, std::vector<std::string>{"soon"});
  EXPECT_GT(loop.timeToNextTimer(), 59min);
  Timer cancelled = loop.postAfter(0ns, [&] { ran.emplace_back("cancelled"); });
  EXPECT_TRUE(cancelled.cancel());
  loop.runReady();
  EXPECT_EQ(ran, std::vector<std::string>{"soon"});
}

TEST(LoopScheduler, TellsALoopWithinAPieceOfNewTimers) {
  LoopScheduler loop;
  std::vector<Timer> timers;
  bool ran = false;
  loop.post([&] {
    // A dialogue sleeps as long as the descriptor lets it.
    timers.push_back(loop.postAfter(1ms, [&] { ran = true; }));
    ASSERT_TRUE(isReadable(loop));
    loop.runReady();
    runUntil(loop, [&] { return ran; });
    std::jthread([&] { timers.push_back(loop.postAfter(1h, [] {})); }).join();
    EXPECT_TRUE(isReadable(loop));
  });
  EXPECT_EQ(loop.runReady(), 1U);
  EXPECT_TRUE(ran);
}

Task<void> tells(const OneShot<int>& answer, std::atomic<bool>& wasOnLoop, LoopScheduler& loop) {
  co_await answer.wait();
  wasOnLoop = loop.isCurrent();
}

TEST(LoopScheduler, LeavesCodeInItsPlaceThatAPieceWakes) {
  LoopScheduler loop;
  const OneShot<int> answer("answer");
  std::atomic<bool> wasOnLoop{true};
  std::atomic<bool> isDone{false};
  const Strand strand(productionScheduler());
  tells(answer, wasOnLoop, loop).onStrand(strand).start([&](TaskResult<void> result) {
    result.take();
    isDone = true;
  });
  loop.post([resolver = answer.resolver()] { resolver.resume(1); });
  loop.runReady();
  EXPECT_TRUE(testing::eventually([&] { return isDone.load(); }));
  EXPECT_FALSE(wasOnLoop);
}

TEST(LoopScheduler, ShortensTheSleepForATimerOfAnotherThread) {
  LoopScheduler loop;
  Timer timer;
  bool ran = false;
  std::jthread arming([&] { timer = loop.postAfter(1ms, [&] { ran = true; }); });
  ASSERT_TRUE(becomesReadable(loop));
  arming.join();
  runUntil(loop, [&] { return ran; });
}

Task<std::vector<bool>> sleepsAndAwaits(LoopScheduler& loop, const OneShot<int>& answer) {
  std::vector<bool> onLoop;
  onLoop.push_back(loop.isCurrent());
  co_await sleepFor(1ms);
  onLoop.push_back(loop.isCurrent());
  co_await answer.wait();
  onLoop.push_back(loop.isCurrent());
  co_return onLoop;
}

TEST(LoopScheduler, KeepsATaskOnItsThread) {
  LoopScheduler loop;
  const OneShot<int> answer("answer");
  std::optional<std::vector<bool>> onLoop;
  bool callbackIsOnLoop = false;
  sleepsAndAwaits(loop, answer).onScheduler(loop).start([&](TaskResult<std::vector<bool>> result) {
    callbackIsOnLoop = loop.isCurrent();
    onLoop = result.take();
  });
  const std::jthread answering([resolver = answer.resolver()] { resolver.resume(1); });
  runUntil(loop, [&] { return onLoop.has_value(); });
  EXPECT_EQ(*onLoop, (std::vector<bool>{true, true, true}));
  EXPECT_TRUE(callbackIsOnLoop);
}

Task<std::string> wayOf(LoopScheduler& loop) {
  std::string way = loop.isCurrent() ? "loop" : "elsewhere";
  co_await loop.enter();
  way += loop.isCurrent() ? ", loop" : ", elsewhere";
  co_await sleepFor(1ms);
  way += loop.isCurrent() ? ", loop" : ", elsewhere";
  co_await loop.enter();
  way += loop.isCurrent() ? ", loop" : ", elsewhere";
  co_return way;
}
Task<std::string> wayAndBack(LoopScheduler& loop) {
  auto entering = wayOf(loop);
  std::string way = co_await std::move(entering);
  way += loop.isCurrent() ? ", loop" : ", elsewhere";
  co_return way;
}

TEST(LoopScheduler, CanBeEnteredFromElsewhere) {
  LoopScheduler loop;
  bool isDone = false;
  std::string way;
  wayAndBack(loop).onScheduler(productionScheduler()).start([&](TaskResult<std::string> result) {
    way = result.take();
    loop.post([&] { isDone = true; });
  });
  runUntil(loop, [&] { return isDone; });
  EXPECT_EQ(way, "elsewhere, loop, loop, loop, elsewhere");
}

TEST(LoopScheduler, CanBeEnteredFromAStrandOfItsOwn) {
  LoopScheduler loop;
  const Strand strand(loop);
  std::string way;
  wayAndBack(loop).onStrand(strand).start([&](TaskResult<std::string> result) { way = result.take(); });
  runUntil(loop, [&] { return !way.empty(); });
  EXPECT_EQ(way, "elsewhere, loop, loop, loop, elsewhere");
}

Task<void> sleepsForAnHour() { co_await sleepFor(1h); }

TEST(LoopScheduler, EndsAWaitThatIsCancelled) {
  LoopScheduler loop;
  std::stop_source stop;
  std::string failure;
  sleepsForAnHour().onScheduler(loop).start(
      [&](TaskResult<void> result) {
        try {
          result.take();
        } catch (const CancelledError& error) {
          failure = error.what();
        }
      },
      stop.get_token());
  loop.runReady();
  std::jthread([&stop] { stop.request_stop(); }).join();
  runUntil(loop, [&] { return !failure.empty(); });
  EXPECT_EQ(failure, "The task was cancelled");
  EXPECT_EQ(loop.timeToNextTimer(), std::nullopt);
}

TEST(LoopScheduler, GivesATaskThatTakesTooLongItsTimeOut) {
  LoopScheduler loop;
  bool isOver = false;
  withTimeout(sleepsForAnHour(), 1ms).onScheduler(loop).start([&](TaskResult<void> result) {
    EXPECT_THROW(result.take(), TimeoutError);
    isOver = true;
  });
  runUntil(loop, [&] { return isOver; });
}

TEST(LoopScheduler, RefusesToBlockWithinAPiece) {
  LoopScheduler loop;
  bool refused = false;
  loop.post([&] {
    try {
      sleepsForAnHour().get();
    } catch (const WouldDeadlockError&) {
      refused = true;
    }
  });
  loop.runReady();
  EXPECT_TRUE(refused);
}

TEST(LoopScheduler, DiscardsWorkThatHasNotBegun) {
  bool ran = false;
  const auto held = std::make_shared<bool*>(&ran);
  {
    LoopScheduler loop;
    loop.post([held] { **held = true; });
    EXPECT_EQ(held.use_count(), 2);
  }
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_FALSE(ran);
}

TEST(LoopScheduler, FailsClearlyWithoutADescriptor) {
  rlimit before{};
  ::getrlimit(RLIMIT_NOFILE, &before);
  const rlimit none{0, before.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &none);
  std::string failure;
  try {
    const LoopScheduler loop;
  } catch (const ResourceExhaustedError& error) {
    failure = error.what();
  }
  ::setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(failure, "The system has no room for more descriptors: Too many open files");
}

}  // namespace
}  // namespace ormel
