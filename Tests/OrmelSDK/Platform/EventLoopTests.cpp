#include "OrmelSDK/Platform/EventLoop.h"

#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <latch>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "OrmelSDK/Platform/FileDescriptor.h"
#include "OrmelSDK/Platform/WatchedDescriptor.h"
#include "Support/Eventually.h"

namespace ormel::detail {

namespace {

using namespace std::chrono_literals;
using testing::eventually;

/// A piece that runs a function, any number of times.
class LoopPiece final : public WorkItem {
 public:
  explicit LoopPiece(std::function<void()> body) : body_(std::move(body)) {}
  void run() noexcept override { body_(); }
  void discard() noexcept override {}
  const char* name() const noexcept override { return "piece"; }

 private:
  std::function<void()> body_;
};

class LoopTimer final : public TimerItem {
 public:
  explicit LoopTimer(std::function<void()> body) : body_(std::move(body)) {}
  void fallDue() noexcept override { body_(); }
  void run() noexcept override {}
  void discard() noexcept override {}
  const char* name() const noexcept override { return "timer"; }

 private:
  std::function<void()> body_;
};

/// A loop with threads of its own, which leave it for pieces of the application as those of the library do.
class ServedLoop {
 public:
  explicit ServedLoop(int threads) {
    served = &loop_;
    for (int thread = 0; thread < threads; ++thread) {
      loop_.expectThread();
      threads_.emplace_back([this] { loop_.serve(); });
    }
  }
  ServedLoop(const ServedLoop&) = delete;
  ServedLoop& operator=(const ServedLoop&) = delete;
  ~ServedLoop() { stop(); }

  EventLoop* operator->() noexcept { return &loop_; }
  EventLoop& operator*() noexcept { return loop_; }

  void post(LoopPiece& piece, WorkKind kind = WorkKind::library) { loop_.post(piece, kind, false); }

  void stop() {
    loop_.stop();
    for (auto& thread : threads_) thread.join();
    threads_.clear();
  }

 private:
  static void run(WorkItem& item, WorkKind kind) noexcept {
    const bool leaves = kind == WorkKind::application && served->leave();
    item.run();
    if (leaves) served->comeBack();
  }

  static inline EventLoop* served = nullptr;
  EventLoop loop_{&ServedLoop::run};
  std::vector<std::thread> threads_;
};

/// Reads what comes, and keeps what it has seen.
class WatchedPipe final : public WatchedDescriptor {
 public:
  WatchedPipe(EventLoop& loop, FileDescriptor descriptor) : WatchedDescriptor(loop, std::move(descriptor)) {}

  void begin() {
    const std::lock_guard lock(mutex_);
    watch(Interest::reading);
  }
  void end() {
    const std::lock_guard lock(mutex_);
    close();
  }
  void again() noexcept { readyAgain(); }

  std::size_t bytes() const { return bytes_; }
  bool hasEnded() const { return hasEnded_; }
  int calls() const { return calls_; }
  bool wasEnteredTwice() const { return wasEnteredTwice_; }

 private:
  void ready(bool) noexcept override {
    if (isInside_.exchange(true)) wasEnteredTwice_ = true;
    ++calls_;
    readAll();
    isInside_ = false;
  }

  void readAll() {
    std::array<char, 16> some;
    for (;;) {
      const std::lock_guard lock(mutex_);
      if (!isOpen()) return;
      const auto count = ::read(number(), some.data(), some.size());
      if (count < 0) return;
      if (count == 0) {
        hasEnded_ = true;
        return close();
      }
      bytes_ += static_cast<std::size_t>(count);
    }
  }

  std::mutex mutex_;
  std::atomic<std::size_t> bytes_{0};
  std::atomic<bool> hasEnded_{false};
  std::atomic<int> calls_{0};
  std::atomic<bool> isInside_{false};
  std::atomic<bool> wasEnteredTwice_{false};
};

void writeTo(const FileDescriptor& descriptor, std::string_view bytes) {
  ASSERT_EQ(::write(descriptor.number(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

}  // namespace

TEST(EventLoop, RunsEachPieceOnce) {
  ServedLoop loop(3);
  constexpr int pieces = 2000;
  std::atomic<int> runs = 0;
  std::vector<std::unique_ptr<LoopPiece>> all;
  for (int piece = 0; piece < pieces; ++piece) all.push_back(std::make_unique<LoopPiece>([&runs] { ++runs; }));
  std::vector<std::thread> posters;
  for (int poster = 0; poster < 2; ++poster) {
    posters.emplace_back([&, poster] {
      const auto kind = poster == 0 ? WorkKind::library : WorkKind::application;
      for (int piece = poster; piece < pieces; piece += 2) loop.post(*all[static_cast<std::size_t>(piece)], kind);
    });
  }
  for (auto& poster : posters) poster.join();
  EXPECT_TRUE(eventually([&] { return runs == pieces; }));
  loop.stop();
  EXPECT_EQ(runs, pieces);
}

/// A piece that blocks until another has run, both posted by a third.
struct BlockingRound {
  explicit BlockingRound(EventLoop& loop)
      : library([this] { hasRun.set_value(); }),
        blocking([this] {
          ranMeanwhile = hasRun.get_future().wait_for(testing::patience) == std::future_status::ready;
          done.set_value();
        }),
        first([this, &loop] {
          loop.post(blocking, WorkKind::application, true);
          loop.post(library, WorkKind::library, true);
        }) {}

  std::promise<void> hasRun;
  std::promise<void> done;
  bool ranMeanwhile = false;
  LoopPiece library;
  LoopPiece blocking;
  LoopPiece first;
};

TEST(EventLoop, LeavesNoWorkBehindAPieceThatBlocks) {
  // They outlive the threads, which may still be returning from a piece.
  std::vector<std::unique_ptr<BlockingRound>> rounds;
  ServedLoop loop(2);
  for (int round = 0; round < 50; ++round) {
    rounds.push_back(std::make_unique<BlockingRound>(*loop));
    loop.post(rounds.back()->first);
    rounds.back()->done.get_future().wait();
    ASSERT_TRUE(rounds.back()->ranMeanwhile) << "round " << round;
  }
}

TEST(EventLoop, RunsWhatAPiecePostsOnItsOwnThreadOnceItHasEnded) {
  ServedLoop loop(1);
  std::promise<bool> ranAfter;
  bool hasEnded = false;
  LoopPiece second([&] { ranAfter.set_value(hasEnded); });
  LoopPiece first([&] {
    loop->post(second, WorkKind::library, true);
    hasEnded = true;
  });
  loop.post(first);
  EXPECT_TRUE(ranAfter.get_future().get());
}

TEST(EventLoop, WakesAThreadForAPieceThatIsSaidToStayButComesFromElsewhere) {
  ServedLoop loop(2);
  for (int round = 0; round < 100; ++round) {
    std::promise<void> ran;
    LoopPiece piece([&] { ran.set_value(); });
    loop->post(piece, WorkKind::library, true);
    ran.get_future().get();
  }
}

TEST(EventLoop, TellsTimersInTheOrderOfTheirDeadlinesAndNeverTooEarly) {
  ServedLoop loop(2);
  std::mutex mutex;
  std::vector<int> order;
  std::atomic<int> early = 0;
  std::vector<std::unique_ptr<LoopTimer>> timers;
  const auto start = EventLoop::now();
  // The first one makes the loop sleep long; each of the others is to cut that short.
  for (const int milliseconds : {40, 30, 20, 10}) {
    const auto deadline = start + static_cast<std::uint64_t>(milliseconds) * 1'000'000;
    timers.push_back(std::make_unique<LoopTimer>([&, milliseconds, deadline] {
      if (EventLoop::now() < deadline) ++early;
      const std::lock_guard lock(mutex);
      order.push_back(milliseconds);
    }));
    loop->arm(*timers.back(), deadline);
  }
  EXPECT_TRUE(eventually([&] {
    const std::lock_guard lock(mutex);
    return order.size() == 4;
  }));
  EXPECT_THAT(order, ::testing::ElementsAre(10, 20, 30, 40));
  EXPECT_EQ(early, 0);
}

// A thread that wakes from its sleep must not hide the sleep of the next one from those that arm a timer.
TEST(EventLoop, TellsEachTimerThatIsArmedWhileItsThreadsTakeTurns) {
  ServedLoop loop(3);
  std::vector<std::thread> users;
  for (int user = 0; user < 4; ++user) {
    users.emplace_back([&] {
      for (int round = 0; round < 300; ++round) {
        std::promise<void> fell;
        LoopTimer timer([&] { fell.set_value(); });
        loop->arm(timer, EventLoop::now() + 200'000);
        fell.get_future().get();
      }
    });
  }
  for (auto& user : users) user.join();
}

TEST(EventLoop, TellsNoTimerThatIsDisarmedAndAllThatComeAfterIt) {
  ServedLoop loop(2);
  std::atomic<bool> disarmedFell = false;
  LoopTimer disarmed([&] { disarmedFell = true; });
  loop->arm(disarmed, EventLoop::now() + 20'000'000);
  EXPECT_TRUE(loop->disarm(disarmed));
  EXPECT_FALSE(loop->disarm(disarmed));
  for (int round = 0; round < 3; ++round) {
    std::promise<void> fell;
    LoopTimer next([&] { fell.set_value(); });
    loop->arm(next, EventLoop::now() + 20'000'000);
    fell.get_future().get();
  }
  EXPECT_FALSE(disarmedFell);
}

TEST(EventLoop, KeepsItsLastThread) {
  EventLoop loop([](WorkItem&, WorkKind) noexcept {});
  loop.expectThread();
  EXPECT_FALSE(loop.leave());
  loop.expectThread();
  EXPECT_TRUE(loop.leave());
  EXPECT_EQ(loop.serving(), 1);
  loop.comeBack();
  EXPECT_EQ(loop.serving(), 2);
}

TEST(EventLoop, AttendsToDescriptorsTimersAndPostsWhilePiecesOfTheApplicationBlock) {
  ServedLoop loop(4);
  for (int round = 0; round < 5; ++round) {
    std::latch blocked(3);
    std::promise<void> release;
    const std::shared_future<void> released = release.get_future().share();
    std::atomic<int> ended = 0;
    std::vector<std::unique_ptr<LoopPiece>> blocking;
    for (int piece = 0; piece < 3; ++piece) {
      blocking.push_back(std::make_unique<LoopPiece>([&] {
        blocked.count_down();
        released.wait();
        ++ended;
      }));
      loop.post(*blocking.back(), WorkKind::application);
    }
    blocked.wait();
    Pipe pipe = makePipe();
    const auto watched = std::make_shared<WatchedPipe>(*loop, std::move(pipe.readEnd));
    watched->begin();
    writeTo(pipe.writeEnd, "one");
    EXPECT_TRUE(eventually([&] { return watched->bytes() == 3; }));
    std::promise<void> fell;
    LoopTimer timer([&] { fell.set_value(); });
    loop->arm(timer, EventLoop::now());
    fell.get_future().get();
    std::promise<void> ran;
    LoopPiece piece([&] { ran.set_value(); });
    loop.post(piece);
    ran.get_future().get();
    release.set_value();
    EXPECT_TRUE(eventually([&] { return ended == 3; }));
    watched->end();
  }
}

// The event comes while the only other thread is parked: nobody waits for descriptors until that one is woken.
TEST(EventLoop, NoticesAnEventThatComesWhileAPieceOfTheApplicationBlocks) {
  ServedLoop loop(2);
  for (int round = 0; round < 200; ++round) {
    Pipe pipe = makePipe();
    const auto watched = std::make_shared<WatchedPipe>(*loop, std::move(pipe.readEnd));
    watched->begin();
    std::promise<bool> seen;
    LoopPiece piece([&] {
      writeTo(pipe.writeEnd, "x");
      seen.set_value(eventually([&] { return watched->bytes() == 1; }));
    });
    loop.post(piece, WorkKind::application);
    ASSERT_TRUE(seen.get_future().get());
    ASSERT_TRUE(eventually([&] { return loop->serving() == 2; })) << "the thread has come back";
    watched->end();
  }
}

TEST(EventLoop, StopsThreadsThatWaitThatAreParkedAndThatAreBusy) {
  for (int round = 0; round < 20; ++round) {
    ServedLoop loop(4);
    std::latch begun(1);
    LoopPiece busy([&] { begun.count_down(); });
    loop.post(busy);
    begun.wait();
    loop.stop();
    EXPECT_EQ(loop->serving(), 0);
  }
}

TEST(WatchedDescriptor, MissesNoChangeAndIsNeverCalledTwiceAtATime) {
  ServedLoop loop(3);
  constexpr int pipes = 4;
  constexpr int writes = 3000;
  std::vector<std::shared_ptr<WatchedPipe>> watched;
  std::vector<std::thread> writers;
  for (int pipe = 0; pipe < pipes; ++pipe) {
    Pipe made = makePipe();
    watched.push_back(std::make_shared<WatchedPipe>(*loop, std::move(made.readEnd)));
    watched.back()->begin();
    writers.emplace_back([into = std::move(made.writeEnd)] {
      for (int write = 0; write < writes; ++write) writeTo(into, "x");
    });
  }
  for (auto& writer : writers) writer.join();
  for (const auto& pipe : watched) {
    EXPECT_TRUE(eventually([&] { return pipe->hasEnded(); }));
    EXPECT_EQ(pipe->bytes(), writes);
    EXPECT_FALSE(pipe->wasEnteredTwice());
  }
}

TEST(WatchedDescriptor, TellsOfWhatWasThereBeforeItWasWatched) {
  ServedLoop loop(2);
  Pipe pipe = makePipe();
  const auto watched = std::make_shared<WatchedPipe>(*loop, std::move(pipe.readEnd));
  writeTo(pipe.writeEnd, "early");
  pipe.writeEnd.close();
  watched->begin();
  EXPECT_TRUE(eventually([&] { return watched->hasEnded(); }));
  EXPECT_EQ(watched->bytes(), 5U);
}

TEST(WatchedDescriptor, IsCalledAgainWhenItAsksForIt) {
  ServedLoop loop(2);
  Pipe pipe = makePipe();
  const auto watched = std::make_shared<WatchedPipe>(*loop, std::move(pipe.readEnd));
  for (int calls = 1; calls <= 50; ++calls) {
    watched->again();
    ASSERT_TRUE(eventually([&] { return watched->calls() == calls; }));
  }
  watched->end();
}

TEST(WatchedDescriptor, MayGoWhileItsEventIsOnTheWay) {
  ServedLoop loop(2);
  for (int round = 0; round < 500; ++round) {
    Pipe pipe = makePipe();
    auto watched = std::make_shared<WatchedPipe>(*loop, std::move(pipe.readEnd));
    watched->begin();
    writeTo(pipe.writeEnd, "x");
    if (round % 2 == 0) watched->end();
    watched.reset();
  }
}

TEST(Poller, WaitsForTheTimeThatItIsGiven) {
  Poller poller;
  std::array<PollEvent, 4> events;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(poller.wait(events, 5ms), 0U);
  EXPECT_GE(std::chrono::steady_clock::now() - start, 5ms);
}

TEST(Poller, IsWokenAlsoBeforeItWaits) {
  Poller poller;
  std::array<PollEvent, 4> events;
  for (int round = 0; round < 3; ++round) {
    poller.wakeUp();
    EXPECT_EQ(poller.wait(events, Poller::forEver), 0U);
  }
}

TEST(Poller, TellsEachChangeOnceAndTheHangUp) {
  Poller poller;
  std::array<PollEvent, 4> events;
  Pipe pipe = makePipe();
  ASSERT_EQ(poller.add(pipe.readEnd.number(), 7), 0);
  writeTo(pipe.writeEnd, "x");
  EXPECT_EQ(poller.wait(events, 0ns), 0U) << "nothing is watched for yet";
  ASSERT_EQ(poller.change(pipe.readEnd.number(), 7, Interest::reading), 0);
  ASSERT_EQ(poller.wait(events, Poller::forEver), 1U);
  EXPECT_EQ(events[0].key, 7U);
  EXPECT_FALSE(events[0].hungUp);
  EXPECT_EQ(poller.wait(events, 0ns), 0U);
  pipe.writeEnd.close();
  ASSERT_EQ(poller.wait(events, Poller::forEver), 1U);
  EXPECT_TRUE(events[0].hungUp);
  poller.remove(pipe.readEnd.number());
}

TEST(Poller, RefusesADescriptorThatCannotBeWatched) {
  Poller poller;
  EXPECT_EQ(poller.add(-1, 1), EBADF);
}

}  // namespace ormel::detail
