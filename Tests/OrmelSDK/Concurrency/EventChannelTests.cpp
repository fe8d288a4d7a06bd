#include "OrmelSDK/Concurrency/EventChannel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <coroutine>
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

using Events = EventChannel<std::string>;

/// All events and the end, as text.
Task<std::string> drain(Events& events) {
  std::string all;
  try {
    while (auto event = co_await events.next()) all += *event + " ";
    all += "end";
  } catch (const std::exception& error) {
    all += error.what();
  }
  co_return all;
}

std::string drainBlocking(Events& events) {
  std::string all;
  try {
    for (const auto& event : events) all += event + " ";
    all += "end";
  } catch (const std::exception& error) {
    all += error.what();
  }
  return all;
}

template <typename Runner>
class EventChannelOn : public ::testing::Test {
 protected:
  Runner runner;
};
TYPED_TEST_SUITE(EventChannelOn, testing::BothSchedulers);

TYPED_TEST(EventChannelOn, DeliversWhatWasYieldedBeforeTheEndAndThenTheEnd) {
  auto [producer, events] = Events::make();
  EXPECT_TRUE(producer.yield("a"));
  EXPECT_TRUE(producer.yield("b"));
  EXPECT_TRUE(producer.finish());
  EXPECT_FALSE(producer.yield("c"));
  EXPECT_FALSE(producer.finish());
  EXPECT_FALSE(producer.fail(std::runtime_error("late")));
  EXPECT_EQ(this->runner.run(drain(events)), "a b end");
  EXPECT_EQ(this->runner.run(drain(events)), "end");
}

TYPED_TEST(EventChannelOn, ThrowsItsFailureOnceAfterTheEventsBeforeIt) {
  auto [producer, events] = Events::make();
  producer.yield("a");
  EXPECT_TRUE(producer.fail(std::runtime_error("broken")));
  EXPECT_EQ(this->runner.run(drain(events)), "a broken");
  EXPECT_EQ(this->runner.run(drain(events)), "end");
}

TYPED_TEST(EventChannelOn, WakesItsWaitingConsumerForEachEventAndForTheEnd) {
  auto [producer, events] = Events::make();
  auto produce = [](Scheduler& scheduler, EventProducer<std::string> into) -> Task<void> {
    for (const char* text : {"a", "b", "c"}) {
      co_await sleepFor(scheduler, std::chrono::microseconds(200));
      into.yield(text);
    }
    co_await sleepFor(scheduler, std::chrono::microseconds(200));
    into.finish();
  };
  auto& scheduler = this->runner.scheduler();
  produce(scheduler, std::move(producer)).onScheduler(scheduler).detach();
  EXPECT_EQ(this->runner.run(drain(events)), "a b c end");
}

TYPED_TEST(EventChannelOn, KeepsOnlyTheNewestEventsWhenItIsBounded) {
  auto [producer, events] = Events::make(ChannelLimit::newest(2));
  for (const char* text : {"a", "b", "c", "d"}) EXPECT_TRUE(producer.yield(text));
  producer.finish();
  EXPECT_EQ(this->runner.run(drain(events)), "c d end");
}

TYPED_TEST(EventChannelOn, LetsNewerEventsPushOutOlderOnesAlsoAfterItsConsumerHasBegun) {
  auto [producer, events] = Events::make(ChannelLimit::newest(2));
  producer.yield("a");
  producer.yield("b");
  auto first = [](Events& from) -> Task<std::string> {
    auto event = co_await from.next();
    co_return *event;
  };
  EXPECT_EQ(this->runner.run(first(events)), "a");
  for (const char* text : {"c", "d"}) producer.yield(text);
  producer.finish();
  EXPECT_EQ(this->runner.run(drain(events)), "c d end");
}

TYPED_TEST(EventChannelOn, FailsWhenAllItsProducersGoWithoutEndingIt) {
  auto [producer, events] = Events::make();
  {
    auto copy = std::move(producer);
    auto another = copy;
    another.yield("a");
  }
  EXPECT_EQ(this->runner.run(drain(events)), "a The operation was abandoned before it completed");
}

TYPED_TEST(EventChannelOn, EndsAWaitByItsStopTokenAndLosesNothing) {
  auto [producer, events] = Events::make();
  std::stop_source stop;
  this->runner.scheduler().post([&stop] { stop.request_stop(); });
  EXPECT_EQ(this->runner.run(drain(events), stop.get_token()), "The task was cancelled");
  producer.yield("a");
  EXPECT_EQ(this->runner.run(drain(events), stop.get_token()), "a The task was cancelled");
  producer.finish();
  EXPECT_EQ(this->runner.run(drain(events), stop.get_token()), "end");
}

TYPED_TEST(EventChannelOn, RefusesToBlockAThreadOfTheLibrary) {
  auto [producer, events] = Events::make();
  producer.yield("a");
  auto body = [](Events& from) -> Task<std::string> { co_return drainBlocking(from); };
  EXPECT_EQ(this->runner.run(body(events)),
            "A blocking wait on a thread of the library would deadlock; use co_await "
            "instead");
  producer.finish();
  EXPECT_EQ(drainBlocking(events), "a end");
}

TYPED_TEST(EventChannelOn, ResumesItsConsumerOnTheStrandOnWhichItSuspended) {
  auto [producer, events] = Events::make();
  const Strand strand(this->runner.scheduler());
  this->runner.scheduler().post([into = producer] {
    into.yield("a");
    into.finish();
  });
  auto body = [](Strand home, Events& from) -> Task<bool> {
    bool held = true;
    while (auto event = co_await from.next()) held = held && home.isCurrent();
    co_return held&& home.isCurrent();
  };
  EXPECT_TRUE(this->runner.run(body(strand, events).onStrand(strand)));
}

std::vector<ChannelTermination>& recordInto(std::vector<ChannelTermination>& seen,
                                            const EventProducer<std::string>& producer) {
  producer.onTermination([&seen](ChannelTermination termination) { seen.push_back(termination); });
  return seen;
}

TEST(EventChannel, TellsItsTerminationCallbackOnceThatTheProducerEndedIt) {
  for (const bool failing : {false, true}) {
    std::vector<ChannelTermination> seen;
    auto [producer, events] = Events::make();
    recordInto(seen, producer);
    failing ? producer.fail(std::runtime_error("x")) : producer.finish();
    producer.finish();
    events.cancel();
    EXPECT_EQ(seen, std::vector{ChannelTermination::producerEnded});
  }
}

TEST(EventChannel, TellsItsTerminationCallbackOnceThatTheConsumerIsGone) {
  for (const bool explicitly : {false, true}) {
    std::vector<ChannelTermination> seen;
    auto [producer, events] = Events::make();
    recordInto(seen, producer);
    EXPECT_TRUE(producer.isOpen());
    if (explicitly) {
      events.cancel();
    } else {
      const Events dropped = std::move(events);
    }
    EXPECT_FALSE(producer.isOpen());
    EXPECT_FALSE(producer.yield("a"));
    EXPECT_FALSE(producer.finish());
    EXPECT_EQ(seen, std::vector{ChannelTermination::consumerGone});
  }
}

TEST(EventChannel, CallsATerminationCallbackThatComesTooLateAtOnce) {
  std::vector<ChannelTermination> seen;
  auto [producer, events] = Events::make();
  producer.finish();
  recordInto(seen, producer);
  EXPECT_EQ(seen, std::vector{ChannelTermination::producerEnded});
}

TEST(EventChannel, RunsItsTerminationCallbackUnderNoLock) {
  auto [producer, events] = Events::make();
  bool open = true;
  producer.onTermination([&open, into = producer](ChannelTermination) {
    into.yield("x");
    open = into.isOpen();
  });
  events.cancel();
  EXPECT_FALSE(open);
}

TEST(EventChannel, DropsUndeliveredEventsWhenTheConsumerCancels) {
  auto held = std::make_shared<int>(1);
  auto [producer, events] = EventChannel<std::shared_ptr<int>>::make();
  producer.yield(held);
  producer.yield(held);
  EXPECT_EQ(**events.nextBlocking(), 1);
  events.cancel();
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_EQ(events.nextBlocking(), std::nullopt);
}

TEST(EventChannel, BlocksAnOrdinaryThreadUntilEventsCome) {
  auto [producer, events] = Events::make();
  std::thread thread([into = std::move(producer)] {
    for (int i = 0; i < 3; ++i) {
      std::this_thread::yield();
      into.yield(std::to_string(i));
    }
    into.fail(Error("broken"));
  });
  EXPECT_EQ(drainBlocking(events), "0 1 2 broken");
  thread.join();
}

TEST(EventChannel, KeepsTheOrderOfEachProducerInEveryInterleavingWithItsConsumer) {
  std::set<std::string> outcomes;
  underSeeds(3000, [&outcomes](SimulatedScheduler& scheduler) {
    auto [producer, events] = EventChannel<int>::make();
    auto produce = [](SimulatedScheduler& on, EventProducer<int> into, int base) -> Task<void> {
      for (int i = 0; i < 3; ++i) {
        into.yield(base + i);
        co_await sleepFor(on, std::chrono::nanoseconds(on.choose(2)));
      }
    };
    auto consume = [](EventChannel<int>& from) -> Task<std::string> {
      std::string all;
      try {
        while (auto event = co_await from.next()) all += std::to_string(*event) + " ";
      } catch (const AbandonedError&) {
        all += "abandoned";
      }
      co_return all;
    };
    produce(scheduler, producer, 10).onScheduler(scheduler).detach();
    produce(scheduler, std::move(producer), 20).onScheduler(scheduler).detach();
    const auto outcome = startOn(scheduler, consume(events).onStrand(Strand(scheduler)));
    scheduler.run();
    ASSERT_TRUE(outcome->isSet()) << scheduler.pending();
    const auto text = outcome->take();
    for (const char* pair : {"10 11", "11 12", "20 21", "21 22"}) {
      const std::string earlier(pair, 2);
      const std::string later(pair + 3, 2);
      EXPECT_LT(text.find(earlier), text.find(later)) << text;
    }
    EXPECT_TRUE(text.ends_with("abandoned"));
    outcomes.insert(text);
  });
  EXPECT_GT(outcomes.size(), 10U);
}

TEST(EventChannel, EndsOnceInEveryOrderOfFinishFailureCancellationAndLossOfTheConsumer) {
  std::set<std::string> outcomes;
  underSeeds(5000, [&outcomes](SimulatedScheduler& scheduler) {
    const Strand consumerStrand(scheduler, "consumer");
    auto [producer, events] = Events::make();
    std::optional<Events> consumer(std::move(events));
    std::stop_source stop;
    std::vector<ChannelTermination> seen;
    recordInto(seen, producer);
    const auto delay = [&] { return std::chrono::nanoseconds(scheduler.choose(2)); };
    int yielded = 0;
    int ends = 0;
    const auto yieldTimer = scheduler.postAfter(delay(), [&, into = producer] { yielded += into.yield("e") ? 1 : 0; });
    const auto finishTimer = scheduler.postAfter(delay(), [&, into = producer] { ends += into.finish() ? 1 : 0; });
    const auto failTimer =
        scheduler.postAfter(delay(), [&, into = producer] { ends += into.fail(std::runtime_error("broken")) ? 1 : 0; });
    const auto stopTimer = scheduler.postAfter(delay(), [&] { stop.request_stop(); });
    const auto loseTimer = consumerStrand.postAfter(delay(), [&] { consumer->cancel(); });
    const auto outcome = startOn(scheduler, drain(*consumer).onStrand(consumerStrand), stop.get_token());
    scheduler.run();

    ASSERT_TRUE(outcome->isSet()) << scheduler.pending();
    const auto text = outcome->take();
    EXPECT_EQ(seen.size(), 1U);
    EXPECT_EQ(ends, seen.front() == ChannelTermination::producerEnded ? 1 : 0);
    EXPECT_GE(yielded, text.starts_with("e ") ? 1 : 0);
    outcomes.insert(text);
  });
  EXPECT_EQ(outcomes, (std::set<std::string>{"end", "e end", "broken", "e broken", "The task was cancelled",
                                             "e The task was cancelled"}));
}

/// A consumer that its owner destroys where it waits, and another one after it.
testing::OwnedForeignCoroutine countInto(Events& from, int& count) {
  while (auto event = co_await from.next()) ++count;
}

TEST(EventChannel, ForgetsAConsumerCoroutineThatIsDestroyedAndLosesNoEvent) {
  std::set<int> takenByTheFirst;
  underSeeds(500, [&takenByTheFirst](SimulatedScheduler& scheduler) {
    const Strand strand(scheduler);
    auto [producer, events] = Events::make();
    int taken = 0;
    std::optional<testing::OwnedForeignCoroutine> consumer;
    strand.post([&, &from = events] { consumer.emplace(countInto(from, taken)); });
    scheduler.run();
    scheduler.post([into = producer] { into.yield("a"); });
    scheduler.post([&] { strand.post([&] { consumer->destroy(); }); });
    scheduler.run();
    producer.finish();
    const auto rest = startOn(scheduler, drain(events));
    scheduler.run();
    EXPECT_EQ(rest->take(), taken == 0 ? "a end" : "end");
    takenByTheFirst.insert(taken);
  });
  EXPECT_EQ(takenByTheFirst, (std::set<int>{0, 1}));
}

TEST(EventChannel, ResumesAConsumerOnlyForItsOwnWaitThoughTheOneBeforeWasDestroyedAfterItsWakeUp) {
  underSeeds(200, [](SimulatedScheduler& scheduler) {
    const Strand strand(scheduler);
    auto [producer, events] = Events::make();
    int taken = 0;
    std::optional<testing::OwnedForeignCoroutine> first;
    std::shared_ptr<testing::Outcome<std::string>> second;
    strand.post([&, &from = events] { first.emplace(countInto(from, taken)); });
    scheduler.run();
    // The wake-up of the first consumer is queued behind this piece, in which the second one begins to wait.
    strand.post([&, &from = events, into = producer] {
      into.yield("a");
      first->destroy();
      second = startOn(scheduler, drain(from).onStrand(strand));
    });
    scheduler.run();
    EXPECT_FALSE(second->isSet());
    for (const char* text : {"b", "c"}) {
      producer.yield(text);
      scheduler.run();
    }
    producer.finish();
    scheduler.run();
    ASSERT_TRUE(second->isSet()) << scheduler.pending();
    EXPECT_EQ(second->take(), "a b c end");
    EXPECT_EQ(taken, 0);
  });
}

TEST(EventChannel, WakesTheNextConsumerWhileTheWakeUpOfADestroyedOneIsStillQueued) {
  underSeeds(200, [](SimulatedScheduler& scheduler) {
    const Strand strand(scheduler);
    auto [producer, events] = Events::make();
    int first = 0;
    int second = 0;
    std::optional<testing::OwnedForeignCoroutine> consumer;
    strand.post([&, &from = events] { consumer.emplace(countInto(from, first)); });
    scheduler.run();
    // All in one piece, so that both wake-ups are queued together.
    strand.post([&, &from = events, into = producer] {
      into.yield("a");
      consumer->destroy();
      consumer.emplace(countInto(from, second));
      into.yield("b");
    });
    scheduler.run();
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 2);
    strand.post([&] { consumer->destroy(); });
    scheduler.run();
  });
}

/// A coroutine of the application whose promise brings a stop token, as that of a task does.
class StoppableCoroutine {
 public:
  class promise_type : public detail::TaskPromiseBase {
   public:
    promise_type(const std::stop_token& token, Events&) { setStopToken(token); }
    StoppableCoroutine get_return_object() noexcept {
      return StoppableCoroutine(std::coroutine_handle<promise_type>::from_promise(*this));
    }
    std::suspend_never initial_suspend() const noexcept { return {}; }
    std::suspend_always final_suspend() const noexcept { return {}; }
    void return_void() const noexcept {}
    void unhandled_exception() const noexcept { std::terminate(); }
  };

  void destroy() const noexcept { coroutine_.destroy(); }

 private:
  explicit StoppableCoroutine(std::coroutine_handle<promise_type> coroutine) noexcept : coroutine_(coroutine) {}
  std::coroutine_handle<promise_type> coroutine_;
};

StoppableCoroutine awaitOne(const std::stop_token&, Events& from) { co_await from.next(); }

TEST(EventChannel, DoesNotStopTheNextConsumerForAStopRequestToADestroyedOne) {
  SimulatedScheduler scheduler(1);
  const Strand strand(scheduler);
  auto [producer, events] = Events::make();
  std::stop_source stop;
  strand.post([&, &from = events] {
    const auto consumer = awaitOne(stop.get_token(), from);
    stop.request_stop();
    consumer.destroy();
  });
  scheduler.run();
  const auto next = startOn(scheduler, drain(events));
  scheduler.run();
  EXPECT_FALSE(next->isSet());
  producer.finish();
  scheduler.run();
  EXPECT_EQ(next->take(), "end");
}

TEST(EventChannel, SurvivesRacesOfEventsAndTheDestructionOfItsConsumerOnRealThreads) {
  const Strand strand(productionScheduler());
  for (int round = 0; round < 500; ++round) {
    auto [producer, events] = Events::make();
    int taken = 0;
    std::optional<testing::OwnedForeignCoroutine> first;
    std::atomic<bool> waiting = false;
    std::shared_ptr<testing::Outcome<std::string>> rest;
    std::atomic<bool> restBegan = false;
    strand.post([&, &from = events] {
      first.emplace(countInto(from, taken));
      waiting = true;
    });
    ASSERT_TRUE(testing::eventually([&] { return waiting.load(); }));
    std::thread yielding([into = producer] {
      into.yield("a");
      into.yield("b");
    });
    std::thread destroying([&, &from = events] {
      strand.post([&] {
        first->destroy();
        rest = startOn(productionScheduler(), drain(from).onStrand(strand));
        restBegan = true;
      });
    });
    yielding.join();
    destroying.join();
    producer.finish();
    ASSERT_TRUE(testing::eventually([&] { return restBegan.load(); }));
    rest->waitUntilSet();
    ASSERT_EQ(rest->take(), taken == 0 ? "a b end" : taken == 1 ? "b end" : "end");
  }
}

TEST(EventChannel, LosesNothingOfManyProducerThreads) {
  constexpr int producers = 4;
  constexpr int each = 5'000;
  auto [producer, events] = EventChannel<int>::make();
  auto consume = [](EventChannel<int>& from) -> Task<std::int64_t> {
    std::vector<int> next(producers, 0);
    std::int64_t sum = 0;
    try {
      while (auto event = co_await from.next()) {
        auto& expected = next[static_cast<std::size_t>(*event / each)];
        EXPECT_EQ(*event % each, expected++);
        sum += *event;
      }
    } catch (const AbandonedError&) {
    }
    co_return sum;
  };
  const auto outcome = startOn(productionScheduler(), consume(events).onStrand(Strand(productionScheduler())));
  std::vector<std::thread> threads;
  for (int number = 0; number < producers; ++number) {
    threads.emplace_back([into = producer, number] {
      for (int i = 0; i < each; ++i) into.yield(number * each + i);
    });
  }
  producer = {};
  for (auto& thread : threads) thread.join();
  outcome->waitUntilSet();
  constexpr std::int64_t total = producers * each;
  EXPECT_EQ(outcome->take(), total * (total - 1) / 2);
}

TEST(EventChannel, SurvivesRacesOfStopRequestsEventsAndLossOnRealThreads) {
  for (int round = 0; round < 1000; ++round) {
    auto [producer, events] = Events::make(round % 2 == 0 ? ChannelLimit::unbounded() : ChannelLimit::newest(1));
    std::stop_source stop;
    std::atomic<int> terminated = 0;
    producer.onTermination([&terminated](ChannelTermination) { ++terminated; });
    const auto outcome =
        startOn(productionScheduler(), drain(events).onStrand(Strand(productionScheduler())), stop.get_token());
    std::thread yielding([into = producer] {
      into.yield("a");
      into.yield("b");
    });
    std::thread finishing([into = producer] { into.finish(); });
    std::thread stopping([&stop] { stop.request_stop(); });
    yielding.join();
    finishing.join();
    stopping.join();
    outcome->waitUntilSet();
    ASSERT_EQ(terminated, 1);
  }
}

TEST(EventChannelTryNext, GivesWhatIsThereAndNeverWaits) {
  auto [producer, events] = EventChannel<int>::make();
  EXPECT_EQ(events.tryNext(), std::nullopt);
  EXPECT_FALSE(events.isReady());
  producer.yield(1);
  producer.yield(2);
  EXPECT_EQ(events.tryNext(), 1);
  EXPECT_EQ(events.tryNext(), 2);
  EXPECT_EQ(events.tryNext(), std::nullopt);
  producer.yield(3);
  producer.fail(std::runtime_error("broken"));
  EXPECT_EQ(events.tryNext(), 3);
  EXPECT_THROW(events.tryNext(), std::runtime_error);
  EXPECT_EQ(events.tryNext(), std::nullopt);
  EXPECT_TRUE(events.isReady());
}

TEST(EventChannelTryNext, GivesTheNewestOfABoundedChannel) {
  auto [producer, events] = EventChannel<int>::make(ChannelLimit::newest(1));
  producer.yield(1);
  producer.yield(2);
  EXPECT_EQ(events.tryNext(), 2);
  EXPECT_EQ(events.tryNext(), std::nullopt);
}

}  // namespace
}  // namespace ormel
