#include "OrmelSDK/AppServerRun/Launch/AppServerProcessExitCoordinator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "OrmelSDK/Base/CheckedCounter.h"
#include "Support/Deadline.h"

namespace {

using namespace std::chrono_literals;
using ormel::detail::AppServerProcessExitCoordinator;

// Timers that fire when the test says so, also when they were cancelled: a real one can be too late to stop.
class ManualTimers {
 public:
  struct Timer {
    std::chrono::nanoseconds delay;
    std::function<void()> fire;
    bool cancelled = false;
    bool fired = false;
  };

  AppServerProcessExitCoordinator::StartTimer starter() {
    return [timers = timers_](std::chrono::nanoseconds delay, std::function<void()> fire) {
      timers->push_back(Timer{delay, std::move(fire)});
      return [timers, index = timers->size() - 1] { (*timers)[index].cancelled = true; };
    };
  }

  void fire(std::size_t index) {
    Timer& timer = (*timers_)[index];
    timer.fired = true;
    timer.fire();
  }

  const std::vector<Timer>& all() const { return *timers_; }

 private:
  std::shared_ptr<std::vector<Timer>> timers_ = std::make_shared<std::vector<Timer>>();
};

class AppServerProcessExitCoordinatorTest : public testing::Test {
 protected:
  std::function<void()> counting(int& runs) {
    return [&runs] { ++runs; };
  }

  bool unread = false;
  ManualTimers timers;
  std::shared_ptr<AppServerProcessExitCoordinator> coordinator =
      AppServerProcessExitCoordinator::create([this] { return unread; }, timers.starter());
};

TEST_F(AppServerProcessExitCoordinatorTest, ReportsTheExitOnceTheGraceHasPassed) {
  int runs = 0;
  coordinator->processDidExit(100ms, counting(runs));
  EXPECT_EQ(runs, 0);
  ASSERT_EQ(timers.all().size(), 1u);
  EXPECT_EQ(timers.all()[0].delay, 100ms);
  timers.fire(0);
  EXPECT_EQ(runs, 1);
  coordinator->chunkProcessed();
  EXPECT_EQ(runs, 1);
}

TEST_F(AppServerProcessExitCoordinatorTest, ReportsNothingAfterEndOfFile) {
  int runs = 0;
  coordinator->readStarted();
  coordinator->readerDidReachEOF();
  coordinator->processDidExit(100ms, counting(runs));
  EXPECT_TRUE(timers.all().empty());
  coordinator->chunkProcessed();
  EXPECT_EQ(runs, 0);
}

TEST_F(AppServerProcessExitCoordinatorTest, StopsTheTimerAtEndOfFile) {
  int runs = 0;
  coordinator->processDidExit(100ms, counting(runs));
  coordinator->readerDidReachEOF();
  EXPECT_TRUE(timers.all()[0].cancelled);
  timers.fire(0);
  EXPECT_EQ(runs, 0);
}

TEST_F(AppServerProcessExitCoordinatorTest, WaitsForAReadInProgressAndItsChunk) {
  int runs = 0;
  coordinator->processDidExit(100ms, counting(runs));
  coordinator->readStarted();
  timers.fire(0);
  EXPECT_EQ(runs, 0);
  coordinator->chunkEnqueued();
  EXPECT_EQ(runs, 0);
  coordinator->chunkProcessed();
  EXPECT_EQ(runs, 1);
}

TEST_F(AppServerProcessExitCoordinatorTest, ReportsOnceAReadInProgressHasFoundNothing) {
  int runs = 0;
  coordinator->processDidExit(100ms, counting(runs));
  coordinator->readStarted();
  timers.fire(0);
  EXPECT_EQ(runs, 0);
  unread = true;
  coordinator->readStarted();
  coordinator->readFoundNothing();
  EXPECT_EQ(runs, 0) << "another read is in progress";
  coordinator->readFoundNothing();
  EXPECT_EQ(runs, 0) << "bytes have come meanwhile";
  unread = false;
  coordinator->readStarted();
  coordinator->readFoundNothing();
  EXPECT_EQ(runs, 1);
}

TEST_F(AppServerProcessExitCoordinatorTest, WaitsForAChunkThatIsNotProcessed) {
  int runs = 0;
  coordinator->readStarted();
  coordinator->chunkEnqueued();
  coordinator->processDidExit(100ms, counting(runs));
  timers.fire(0);
  EXPECT_EQ(runs, 0);
  coordinator->chunkProcessed();
  EXPECT_EQ(runs, 1);
}

TEST_F(AppServerProcessExitCoordinatorTest, WaitsForUnreadBytesAndTriesAgainAfterTheNextChunk) {
  int runs = 0;
  unread = true;
  coordinator->processDidExit(100ms, counting(runs));
  timers.fire(0);
  EXPECT_EQ(runs, 0);
  coordinator->readStarted();
  coordinator->chunkEnqueued();
  coordinator->chunkProcessed();
  EXPECT_EQ(runs, 0);
  unread = false;
  EXPECT_EQ(runs, 0);
  coordinator->chunkProcessed();
  EXPECT_EQ(runs, 1);
}

TEST_F(AppServerProcessExitCoordinatorTest, ReplacesTheFirstReportByASecond) {
  int first = 0;
  int second = 0;
  coordinator->processDidExit(100ms, counting(first));
  coordinator->processDidExit(200ms, counting(second));
  EXPECT_TRUE(timers.all()[0].cancelled);
  EXPECT_FALSE(timers.all()[1].cancelled);
  timers.fire(0);
  EXPECT_EQ(first + second, 0);
  timers.fire(1);
  EXPECT_EQ(first, 0);
  EXPECT_EQ(second, 1);
}

TEST_F(AppServerProcessExitCoordinatorTest, GivesTheSecondReportAGraceOfItsOwn) {
  int first = 0;
  int second = 0;
  unread = true;
  coordinator->processDidExit(100ms, counting(first));
  timers.fire(0);
  coordinator->processDidExit(100ms, counting(second));
  unread = false;
  coordinator->chunkProcessed();
  EXPECT_EQ(first + second, 0);
  timers.fire(1);
  EXPECT_EQ(first, 0);
  EXPECT_EQ(second, 1);
}

TEST_F(AppServerProcessExitCoordinatorTest, ReportsNothingOnceItIsCancelled) {
  int runs = 0;
  coordinator->processDidExit(100ms, counting(runs));
  coordinator->cancel();
  EXPECT_TRUE(timers.all()[0].cancelled);
  timers.fire(0);
  coordinator->processDidExit(100ms, counting(runs));
  EXPECT_EQ(timers.all().size(), 1u);
  coordinator->chunkProcessed();
  coordinator->cancel();
  EXPECT_EQ(runs, 0);
}

TEST_F(AppServerProcessExitCoordinatorTest, ReportsWhenTheTimerFiresWhileItIsBeingStarted) {
  int runs = 0;
  coordinator = AppServerProcessExitCoordinator::create([] { return false; },
                                                        [](std::chrono::nanoseconds, std::function<void()> fire) {
                                                          fire();
                                                          return AppServerProcessExitCoordinator::CancelTimer();
                                                        });
  coordinator->processDidExit(0ns, counting(runs));
  EXPECT_EQ(runs, 1);
}

TEST_F(AppServerProcessExitCoordinatorTest, StopsATimerThatWasStartedTooLate) {
  bool stopped = false;
  int runs = 0;
  coordinator = AppServerProcessExitCoordinator::create([] { return false; },
                                                        [&](std::chrono::nanoseconds, std::function<void()>) {
                                                          coordinator->readerDidReachEOF();
                                                          return [&stopped] { stopped = true; };
                                                        });
  coordinator->processDidExit(0ns, counting(runs));
  EXPECT_TRUE(stopped);
  EXPECT_EQ(runs, 0);
}

TEST_F(AppServerProcessExitCoordinatorTest, IsNotKeptAliveByItsTimer) {
  int runs = 0;
  coordinator->processDidExit(100ms, counting(runs));
  const std::weak_ptr weak = coordinator;
  coordinator.reset();
  EXPECT_TRUE(weak.expired());
  timers.fire(0);
  EXPECT_EQ(runs, 0);
}

TEST_F(AppServerProcessExitCoordinatorTest, DropsWhatTheReportOwnsOnceItIsNotNeeded) {
  for (const std::string_view way : {"report", "end of file", "cancel"}) {
    ManualTimers ownTimers;
    coordinator = AppServerProcessExitCoordinator::create([] { return false; }, ownTimers.starter());
    const auto owned = std::make_shared<int>();
    coordinator->processDidExit(100ms, [owned] {});
    EXPECT_EQ(owned.use_count(), 2);
    if (way == "report") ownTimers.fire(0);
    if (way == "end of file") coordinator->readerDidReachEOF();
    if (way == "cancel") coordinator->cancel();
    EXPECT_EQ(owned.use_count(), 1) << way;
  }
}

// Calls every operation, which would not return if the lock were held.
void callEverything(AppServerProcessExitCoordinator& coordinator) {
  coordinator.readStarted();
  coordinator.chunkEnqueued();
  coordinator.chunkProcessed();
  coordinator.processDidExit(1ms, [] {});
  coordinator.readerDidReachEOF();
  coordinator.cancel();
}

TEST(AppServerProcessExitCoordinator, CallsNothingUnderItsLock) {
  EXPECT_TRUE(ormel::testing::endsInTime([] {
    for (const std::string_view way : {"report", "report by a chunk", "end of file", "cancel", "replace"}) {
      auto fire = std::make_shared<std::function<void()>>();
      auto entered = std::make_shared<bool>(false);
      std::shared_ptr<AppServerProcessExitCoordinator> coordinator;
      const auto enter = [&coordinator, entered] {
        if (std::exchange(*entered, true)) return;
        callEverything(*coordinator);
      };
      coordinator =
          AppServerProcessExitCoordinator::create([] { return false; },
                                                  [fire, enter](std::chrono::nanoseconds, std::function<void()> timer) {
                                                    *fire = std::move(timer);
                                                    return enter;
                                                  });
      coordinator->processDidExit(1ms, enter);
      if (way == "report") {
        (*fire)();
      } else if (way == "report by a chunk") {
        coordinator->readStarted();
        (*fire)();
        coordinator->chunkEnqueued();
        coordinator->chunkProcessed();
      } else if (way == "end of file") {
        coordinator->readerDidReachEOF();
      } else if (way == "cancel") {
        coordinator->cancel();
      } else {
        coordinator->processDidExit(1ms, [] {});
      }
      EXPECT_TRUE(*entered) << way;
    }
  }));
}

TEST(AppServerProcessExitCoordinator, DestroysADroppedReportOutsideOfItsLock) {
  struct CallingWhenDestroyed {
    explicit CallingWhenDestroyed(std::weak_ptr<AppServerProcessExitCoordinator> target)
        : coordinator(std::move(target)) {}
    ~CallingWhenDestroyed() {
      if (const auto alive = coordinator.lock()) callEverything(*alive);
    }
    std::weak_ptr<AppServerProcessExitCoordinator> coordinator;
  };
  EXPECT_TRUE(ormel::testing::endsInTime([] {
    for (const std::string_view way : {"end of file", "cancel", "replace", "refuse"}) {
      ManualTimers timers;
      const auto coordinator = AppServerProcessExitCoordinator::create([] { return false; }, timers.starter());
      if (way == "refuse") coordinator->cancel();
      coordinator->processDidExit(1ms, [owned = std::make_shared<CallingWhenDestroyed>(coordinator)] {});
      if (way == "end of file") coordinator->readerDidReachEOF();
      if (way == "cancel") coordinator->cancel();
      if (way == "replace") coordinator->processDidExit(1ms, [] {});
    }
  }));
}

TEST(IncrementCounter, AddsOne) {
  std::uint64_t counter = 41;
  ormel::detail::incrementCounter(counter);
  EXPECT_EQ(counter, 42u);
}

TEST(IncrementCounterDeathTest, EndsTheProcessBeforeItWouldOverflow) {
  std::uint64_t counter = std::numeric_limits<std::uint64_t>::max() - 1;
  ormel::detail::incrementCounter(counter);
  EXPECT_DEATH(ormel::detail::incrementCounter(counter), "Fatal error: .*counter.*overflowed");
}

// The possible steps, each a letter of a script: a read starts (r), a chunk is enqueued (e) or processed (p), end of
// file (f), the process exits (x), the oldest (o) or newest (n) timer fires that has not fired yet, be it cancelled or
// not, cancel (c), and the pipe gets or loses unread bytes (u).
constexpr std::string_view allSteps = "repfxoncu";

// Plays a script and holds the coordinator to its promises after every step.
class ScriptPlayer {
 public:
  ScriptPlayer() {
    coordinator_ = AppServerProcessExitCoordinator::create([this] { return unread_; }, timers_.starter());
  }

  // The first broken promise, or nothing.
  std::string play(std::string_view script) {
    for (const char step : script) {
      const bool mayReport = take(step);
      if (violation_.empty()) checkAfter(mayReport);
      if (!violation_.empty()) return violation_ + " at a step '" + step + "' of \"" + std::string(script) + "\"";
    }
    return {};
  }

 private:
  struct Exit {
    bool gracePassed = false;
    bool reported = false;
  };

  // Returns whether the step is one that must report an exit if one is due.
  bool take(char step) {
    switch (step) {
      case 'r':
        if (!settled_) ++reads_;
        coordinator_->readStarted();
        return false;
      case 'e':
        finishRead();
        ++enqueued_;
        coordinator_->chunkEnqueued();
        return false;
      case 'p':
        ++processed_;
        coordinator_->chunkProcessed();
        return true;
      case 'f':
        finishRead();
        settled_ = true;
        coordinator_->readerDidReachEOF();
        return false;
      case 'x':
        return exit();
      case 'o':
      case 'n':
        return fire(step == 'n');
      case 'c':
        settled_ = true;
        coordinator_->cancel();
        return false;
      default:
        unread_ = !unread_;
        return false;
    }
  }

  bool exit() {
    if (!settled_) exits_.emplace_back();
    coordinator_->processDidExit(1ms, [this, number = exits_.size(), refused = settled_] { report(number, refused); });
    return false;
  }

  bool fire(bool newest) {
    const auto& timers = timers_.all();
    std::vector<std::size_t> waiting;
    for (std::size_t index = 0; index < timers.size(); ++index) {
      if (!timers[index].fired) waiting.push_back(index);
    }
    if (waiting.empty()) return false;
    const std::size_t index = newest ? waiting.back() : waiting.front();
    exits_[index].gracePassed = true;
    timers_.fire(index);
    return index + 1 == exits_.size();
  }

  void finishRead() { reads_ = std::max(0, reads_ - 1); }

  bool isIdle() const { return reads_ == 0 && processed_ >= enqueued_ && !unread_; }

  void report(std::size_t number, bool refused) {
    if (refused) return require(false, "a report ran that came after the end");
    Exit& reported = exits_[number - 1];
    require(!settled_, "a report ran after end of file or cancel");
    require(number == exits_.size(), "a replaced report ran");
    require(!reported.reported, "a report ran twice");
    require(reported.gracePassed, "a report ran ahead of its grace");
    require(isIdle(), "a report ran with output left");
    reported.reported = true;
  }

  void checkAfter(bool mayReport) {
    const bool due = !settled_ && !exits_.empty() && exits_.back().gracePassed && isIdle();
    require(!mayReport || !due || exits_.back().reported, "a report did not run although it was due");
    const auto running = std::ranges::count_if(timers_.all(), [](const auto& t) { return !t.fired && !t.cancelled; });
    require(running <= (settled_ ? 0 : 1), "a timer was not stopped");
    require(timers_.all().size() == exits_.size(), "a timer was started without need");
  }

  void require(bool kept, const char* violation) {
    if (!kept && violation_.empty()) violation_ = violation;
  }

  ManualTimers timers_;
  std::shared_ptr<AppServerProcessExitCoordinator> coordinator_;
  std::vector<Exit> exits_;
  bool unread_ = false;
  bool settled_ = false;
  int reads_ = 0;
  int enqueued_ = 0;
  int processed_ = 0;
  std::string violation_;
};

TEST(AppServerProcessExitCoordinator, KeepsItsPromisesInEveryScriptOfSixSteps) {
  constexpr std::size_t length = 6;
  std::vector<std::size_t> digits(length, 0);
  std::string script(length, allSteps[0]);
  for (bool more = true; more;) {
    ASSERT_EQ(ScriptPlayer().play(script), "");
    more = false;
    for (std::size_t place = 0; place < length && !more; ++place) {
      digits[place] = (digits[place] + 1) % allSteps.size();
      script[place] = allSteps[digits[place]];
      more = digits[place] != 0;
    }
  }
}

TEST(AppServerProcessExitCoordinator, KeepsItsPromisesInEveryOrderOfALifesSteps) {
  for (const std::string_view life : {"reprepxof", "rpexonrepx", "repuurxop", "repxoxnpc", "reepprxof"}) {
    std::string script(life);
    std::ranges::sort(script);
    do {
      ASSERT_EQ(ScriptPlayer().play(script), "");
    } while (std::ranges::next_permutation(script).found);
  }
}

// A coordinator in the hands of a reader, a consumer, a process and a timer, each on a thread of its own.
class Tumult {
 public:
  enum class End { none, endOfFile, cancel };

  // Returns how many times the exit was reported.
  static int run(End end, int chunks) {
    const auto tumult = std::make_shared<Tumult>();
    tumult->play(end, chunks);
    return tumult->reports_;
  }

 private:
  void play(End end, int chunks) {
    const auto coordinator =
        AppServerProcessExitCoordinator::create([this] { return unread_.load(); },
                                                [this](std::chrono::nanoseconds, std::function<void()> fire) {
                                                  const std::lock_guard guard(lock_);
                                                  threads_.emplace_back(std::move(fire));
                                                  return [] {};
                                                });
    {
      const std::lock_guard guard(lock_);
      threads_.emplace_back([=, this] {
        for (int chunk = 0; chunk < chunks; ++chunk) {
          coordinator->readStarted();
          unread_ = chunk + 1 < chunks;
          coordinator->chunkEnqueued();
          enqueued_.fetch_add(1);
          enqueued_.notify_one();
        }
        if (end == End::endOfFile) coordinator->readerDidReachEOF();
      });
      threads_.emplace_back([=, this] {
        for (int chunk = 0; chunk < chunks; ++chunk) {
          enqueued_.wait(chunk);
          coordinator->chunkProcessed();
        }
      });
      threads_.emplace_back([=, this] { coordinator->processDidExit(1ns, [this] { reports_.fetch_add(1); }); });
      if (end == End::cancel) threads_.emplace_back([=] { coordinator->cancel(); });
    }
    joinAll();
  }

  // Threads that are joined can start others.
  void joinAll() {
    for (std::size_t index = 0;; ++index) {
      std::thread next;
      {
        const std::lock_guard guard(lock_);
        if (index == threads_.size()) return;
        next = std::move(threads_[index]);
      }
      next.join();
    }
  }

  std::mutex lock_;
  std::vector<std::thread> threads_;
  std::atomic<bool> unread_ = true;
  std::atomic<int> enqueued_ = 0;
  std::atomic<int> reports_ = 0;
};

TEST(AppServerProcessExitCoordinator, ReportsExactlyOnceFromManyThreads) {
  for (int round = 0; round < 300; ++round) {
    const int chunks = 1 + round % 7;
    ASSERT_EQ(Tumult::run(Tumult::End::none, chunks), 1) << "round " << round;
    ASSERT_LE(Tumult::run(Tumult::End::endOfFile, chunks), 1) << "round " << round;
    ASSERT_LE(Tumult::run(Tumult::End::cancel, chunks), 1) << "round " << round;
  }
}

}  // namespace
