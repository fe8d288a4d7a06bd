#include "OrmelSDK/Options/AbortSignal.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <barrier>
#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>
#include <vector>

#include "OrmelSDK/Options/TurnOptions.h"
#include "Support/Deadline.h"

namespace {

using ormel::AbortController;
using ormel::AbortSignal;
using ormel::UUID;

AbortSignal::Observer counting(int& calls) {
  return [&calls] { ++calls; };
}

TEST(AbortSignal, IsNotAbortedAtFirst) {
  EXPECT_FALSE(AbortSignal().isAborted());
  EXPECT_FALSE(AbortController().signal.isAborted());
}

TEST(AbortSignal, CallsEachObserverOnceHoweverOftenItIsAborted) {
  const AbortController controller;
  int first = 0;
  int second = 0;
  controller.signal.register_(counting(first));
  controller.signal.register_(counting(second));
  EXPECT_EQ(first, 0);
  controller.abort();
  controller.abort();
  EXPECT_TRUE(controller.signal.isAborted());
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 1);
}

TEST(AbortSignal, CallsALateObserverBeforeRegistrationReturns) {
  const AbortSignal signal;
  signal.abort();
  int calls = 0;
  const UUID token = signal.register_(counting(calls));
  EXPECT_EQ(calls, 1);
  EXPECT_NE(token, UUID());
  signal.unregister(token);
  signal.abort();
  EXPECT_EQ(calls, 1);
}

TEST(AbortSignal, DoesNotCallAnObserverThatWasTakenAway) {
  const AbortSignal signal;
  int taken = 0;
  int kept = 0;
  const UUID token = signal.register_(counting(taken));
  signal.register_(counting(kept));
  signal.unregister(token);
  signal.abort();
  EXPECT_EQ(taken, 0);
  EXPECT_EQ(kept, 1);
}

TEST(AbortSignal, IgnoresTokensThatStandForNothing) {
  const AbortSignal signal;
  int calls = 0;
  const UUID token = signal.register_(counting(calls));
  signal.unregister(UUID::random());
  signal.unregister(token);
  signal.unregister(token);
  signal.abort();
  signal.unregister(token);
  EXPECT_EQ(calls, 0);
}

TEST(AbortSignal, GivesEachObserverATokenOfItsOwn) {
  const AbortSignal signal;
  EXPECT_NE(signal.register_([] {}), signal.register_([] {}));
}

TEST(AbortSignal, IsSharedByItsCopies) {
  const AbortController controller;
  const AbortSignal copy = controller.signal;
  int calls = 0;
  copy.register_(counting(calls));
  EXPECT_EQ(copy, controller.signal);
  EXPECT_NE(copy, AbortSignal());
  controller.abort();
  EXPECT_TRUE(copy.isAborted());
  EXPECT_EQ(calls, 1);
}

TEST(AbortSignal, StaysUsableAfterAMove) {
  AbortSignal signal;
  const AbortSignal moved = std::move(signal);
  EXPECT_EQ(signal, moved);
  EXPECT_FALSE(signal.isAborted());
}

TEST(AbortSignal, ReachesAllOperationsThatAreStillRegistered) {
  const AbortController controller;
  std::array<int, 3> operations{};
  std::vector<UUID> tokens;
  for (int& calls : operations) tokens.push_back(controller.signal.register_(counting(calls)));
  controller.signal.unregister(tokens[1]);
  controller.abort();
  EXPECT_EQ(operations, (std::array{1, 0, 1}));
}

TEST(AbortSignal, LetsAnObserverUseTheSignal) {
  const bool ended = ormel::testing::endsInTime([] {
    const AbortSignal signal;
    int nested = 0;
    bool seen = false;
    const UUID other = signal.register_([] {});
    signal.register_([&] {
      seen = signal.isAborted();
      signal.unregister(other);
      signal.register_(counting(nested));
      signal.abort();
    });
    signal.abort();
    EXPECT_TRUE(seen);
    EXPECT_EQ(nested, 1);
  });
  EXPECT_TRUE(ended);
}

TEST(AbortSignal, LetsWhatAnObserverHoldsUseTheSignalWhenItIsDestroyed) {
  struct Holder {
    explicit Holder(AbortSignal used) : signal(std::move(used)) {}
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    ~Holder() { signal.unregister(UUID()); }
    AbortSignal signal;
  };
  const bool ended = ormel::testing::endsInTime([] {
    const AbortSignal signal;
    signal.unregister(signal.register_([holder = std::make_shared<Holder>(signal)] { (void)holder; }));
    signal.register_([holder = std::make_shared<Holder>(signal)] { (void)holder; });
    signal.abort();
    signal.register_([holder = std::make_shared<Holder>(signal)] { (void)holder; });
  });
  EXPECT_TRUE(ended);
}

TEST(AbortSignal, SurvivesAnObserverThatDropsTheLastHandle) {
  std::optional<AbortSignal> only{AbortSignal()};
  int calls = 0;
  only->register_([&] {
    only.reset();
    ++calls;
  });
  only->abort();
  EXPECT_FALSE(only.has_value());
  EXPECT_EQ(calls, 1);
}

TEST(AbortSignal, CallsTheOtherObserversWhenOneThrows) {
  const AbortSignal signal;
  int calls = 0;
  const auto throwing = [&calls] {
    ++calls;
    throw std::runtime_error("observer");
  };
  for (int i = 0; i < 3; ++i) signal.register_(throwing);
  EXPECT_THROW(signal.abort(), std::runtime_error);
  EXPECT_EQ(calls, 3);
  EXPECT_THROW(signal.register_(throwing), std::runtime_error);
  EXPECT_TRUE(signal.isAborted());
}

TEST(AbortSignal, CallsEveryObserverExactlyOnceInARaceOfThreads) {
  constexpr std::size_t rounds = 20;
  constexpr std::size_t registering = 4;
  constexpr std::size_t aborting = 2;
  constexpr std::size_t perThread = 50;
  for (std::size_t round = 0; round < rounds; ++round) {
    const AbortController controller;
    std::array<std::array<std::atomic<int>, perThread>, registering> kept{};
    std::array<std::array<std::atomic<int>, perThread>, registering> withdrawn{};
    std::barrier start(static_cast<std::ptrdiff_t>(registering + aborting));
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < registering; ++thread) {
      threads.emplace_back([&, thread] {
        start.arrive_and_wait();
        for (std::size_t i = 0; i < perThread; ++i) {
          controller.signal.register_([&count = kept[thread][i]] { ++count; });
          controller.signal.unregister(controller.signal.register_([&count = withdrawn[thread][i]] { ++count; }));
        }
      });
    }
    for (std::size_t thread = 0; thread < aborting; ++thread) {
      threads.emplace_back([&] {
        start.arrive_and_wait();
        controller.abort();
        EXPECT_TRUE(controller.signal.isAborted());
      });
    }
    for (auto& thread : threads) thread.join();
    for (const auto& counts : kept) {
      for (const auto& count : counts) EXPECT_EQ(count, 1);
    }
    for (const auto& counts : withdrawn) {
      for (const auto& count : counts) EXPECT_LE(count, 1);
    }
  }
}

TEST(AbortController, StandsForItsSignalInOptions) {
  const AbortController controller;
  ormel::TurnOptions options;
  options.signal = controller;
  EXPECT_EQ(options.signal, controller.signal);
  controller.abort();
  EXPECT_TRUE(options.signal->isAborted());
}

}  // namespace
