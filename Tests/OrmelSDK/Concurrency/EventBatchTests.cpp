#include "OrmelSDK/Concurrency/EventBatch.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "OrmelSDK/Concurrency/EventChannel.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "Support/ConcurrencySchedulers.h"

namespace ormel {
namespace {

EventBatch<std::string> numbers(int from, int to) {
  EventBatch<std::string> batch;
  for (int number = from; number < to; ++number) batch.emplaceBack(std::to_string(number));
  return batch;
}

/// Empties a batch.
std::vector<std::string> taken(EventBatch<std::string> batch) {
  std::vector<std::string> all;
  for (; !batch.empty(); batch.popFront()) all.push_back(batch.front());
  return all;
}

TEST(EventBatch, GivesItsEventsInTheOrderOfTheirMaking) {
  std::vector<std::string> expected;
  for (int number = 0; number < 1000; ++number) expected.push_back(std::to_string(number));
  EXPECT_EQ(numbers(0, 1000).size(), 1000U);
  EXPECT_EQ(taken(numbers(0, 1000)), expected);
}

TEST(EventBatch, WalksThroughItsEventsWithoutTakingThem) {
  auto batch = numbers(0, 100);
  batch.popFront();
  int next = 1;
  for (const std::string& event : batch) EXPECT_EQ(event, std::to_string(next++));
  EXPECT_EQ(next, 100);
  EXPECT_EQ(batch.size(), 99U);
  for (const std::string& event : EventBatch<std::string>()) ADD_FAILURE() << event;
}

TEST(EventBatch, TakesAnotherBatchInWithoutMovingAnEvent) {
  auto batch = numbers(0, 3);
  auto more = numbers(3, 50);
  const std::string* const first = &more.front();
  batch.append(std::move(more));
  batch.append(EventBatch<std::string>());
  EXPECT_TRUE(more.empty());
  for (int number = 0; number < 3; ++number) batch.popFront();
  EXPECT_EQ(&batch.front(), first);
  batch.append(numbers(50, 60));
  EXPECT_EQ(batch.size(), 57U);
  EXPECT_EQ(taken(std::move(batch)).back(), "59");
}

TEST(EventBatch, CanBeFilledAgainAfterItWasEmptied) {
  auto batch = numbers(0, 5);
  batch.clear();
  EXPECT_TRUE(batch.empty());
  batch.append(numbers(5, 7));
  batch.emplaceBack("7");
  EXPECT_EQ(taken(std::move(batch)), (std::vector<std::string>{"5", "6", "7"}));
}

TEST(EventBatch, DestroysWhatWasNotTaken) {
  const auto shared = std::make_shared<int>(1);
  {
    EventBatch<std::shared_ptr<int>> batch;
    for (int count = 0; count < 40; ++count) batch.emplaceBack(shared);
    EventBatch<std::shared_ptr<int>> moved = std::move(batch);
    moved.popFront();
    EXPECT_EQ(shared.use_count(), 40);
  }
  EXPECT_EQ(shared.use_count(), 1);
}

struct ThrowsInTheMaking {
  explicit ThrowsInTheMaking(bool really) {
    if (really) throw std::runtime_error("no");
  }
};

TEST(EventBatch, IsAsBeforeWhenTheMakingOfAnEventFails) {
  EventBatch<ThrowsInTheMaking> batch;
  EXPECT_THROW(batch.emplaceBack(true), std::runtime_error);
  EXPECT_TRUE(batch.empty());
  for (int count = 0; count < 3; ++count) batch.emplaceBack(false);
  for (int count = 0; count < 9; ++count) EXPECT_THROW(batch.emplaceBack(true), std::runtime_error);
  EXPECT_EQ(batch.size(), 3U);
}

using Events = EventChannel<std::string>;

template <typename Runner>
class EventBatchesOn : public ::testing::Test {
 protected:
  Runner runner;
};
TYPED_TEST_SUITE(EventBatchesOn, testing::BothSchedulers);

Task<std::vector<std::string>> nextBatch(Events& events) {
  auto batch = co_await events.nextBatch();
  co_return taken(std::move(batch));
}

TYPED_TEST(EventBatchesOn, GiveAllThatIsThereAndNothingAtTheEnd) {
  auto [producer, events] = Events::make();
  EXPECT_FALSE(events.isReady());
  EXPECT_TRUE(producer.yield("a"));
  EXPECT_TRUE(producer.yieldAll(numbers(0, 2)));
  EXPECT_TRUE(events.isReady());
  EXPECT_EQ(this->runner.run(nextBatch(events)), (std::vector<std::string>{"a", "0", "1"}));
  EXPECT_TRUE(producer.yieldAll(numbers(2, 3)));
  producer.finish();
  EXPECT_FALSE(producer.yieldAll(numbers(3, 4)));
  EXPECT_EQ(this->runner.run(nextBatch(events)), (std::vector<std::string>{"2"}));
  EXPECT_EQ(this->runner.run(nextBatch(events)), std::vector<std::string>());
}

TYPED_TEST(EventBatchesOn, ThrowTheFailureOfTheChannelAfterTheEventsBefore) {
  auto [producer, events] = Events::make();
  producer.yieldAll(numbers(0, 2));
  producer.fail(std::runtime_error("broken"));
  EXPECT_EQ(this->runner.run(nextBatch(events)), (std::vector<std::string>{"0", "1"}));
  EXPECT_THROW(this->runner.run(nextBatch(events)), std::runtime_error);
  EXPECT_EQ(this->runner.run(nextBatch(events)), std::vector<std::string>());
}

TYPED_TEST(EventBatchesOn, PushOldEventsOutOfABoundedChannel) {
  auto [producer, events] = Events::make(ChannelLimit::newest(2));
  EXPECT_TRUE(producer.yieldAll(numbers(0, 5)));
  EXPECT_EQ(this->runner.run(nextBatch(events)), std::vector<std::string>{"3"});
  EXPECT_EQ(this->runner.run(nextBatch(events)), std::vector<std::string>{"4"});
}

/// All batches up to the end as text, each in brackets.
Task<std::string> drainInBatches(Events& events) {
  std::string all;
  try {
    for (;;) {
      auto batch = co_await events.nextBatch();
      if (batch.empty()) co_return all + "end";
      all += "[";
      for (const std::string& text : taken(std::move(batch))) all += text + " ";
      all += "]";
    }
  } catch (const std::exception& error) {
    all += error.what();
  }
  co_return all;
}

TYPED_TEST(EventBatchesOn, EndTheirWaitByAStopTokenAndLoseNothing) {
  for (const auto limit : {ChannelLimit::unbounded(), ChannelLimit::newest(4)}) {
    auto [producer, events] = Events::make(limit);
    std::stop_source stop;
    this->runner.scheduler().post([&stop] { stop.request_stop(); });
    EXPECT_EQ(this->runner.run(drainInBatches(events), stop.get_token()), "The task was cancelled");
    producer.yield("a");
    EXPECT_EQ(this->runner.run(drainInBatches(events), stop.get_token()), "[a ]The task was cancelled");
    producer.finish();
    EXPECT_EQ(this->runner.run(drainInBatches(events), stop.get_token()), "end");
  }
}

Task<std::string> next(Events& events) {
  auto event = co_await events.next();
  co_return event.value_or("end");
}

TYPED_TEST(EventBatchesOn, MayBeTakenByTurnsWithSingleEvents) {
  auto [producer, events] = Events::make();
  producer.yieldAll(numbers(0, 4));
  EXPECT_EQ(this->runner.run(next(events)), "0");
  EXPECT_EQ(this->runner.run(next(events)), "1");
  producer.yield("4");
  EXPECT_EQ(this->runner.run(nextBatch(events)), (std::vector<std::string>{"2", "3"}));
  EXPECT_EQ(this->runner.run(next(events)), "4");
  producer.yieldAll(numbers(5, 7));
  producer.finish();
  EXPECT_EQ(this->runner.run(next(events)), "5");
  EXPECT_EQ(this->runner.run(nextBatch(events)), std::vector<std::string>{"6"});
  EXPECT_EQ(this->runner.run(next(events)), "end");
  EXPECT_EQ(this->runner.run(nextBatch(events)), std::vector<std::string>());
}

TEST(EventBatches, GiveABoundedChannelWhatComesBeforeItsEnd) {
  using Shared = std::shared_ptr<void>;
  auto ends = EventChannel<Shared>::make(ChannelLimit::newest(2));
  const auto& producer = ends.first;
  // The channel ends when the third event pushes the first one out.
  const auto endsTheChannel = [&] { return Shared(nullptr, [&producer](std::nullptr_t) { producer.finish(); }); };
  EventBatch<Shared> batch;
  batch.emplaceBack(endsTheChannel());
  for (int count = 0; count < 4; ++count) batch.emplaceBack(std::make_shared<int>(count));
  EXPECT_FALSE(producer.yieldAll(std::move(batch)));
  std::vector<int> left;
  while (auto event = ends.second.nextBlocking()) left.push_back(*std::static_pointer_cast<int>(*event));
  EXPECT_EQ(left, (std::vector<int>{0, 1}));
}

TEST(EventBatches, EmptyOnesWakeNobody) {
  SimulatedScheduler scheduler(1);
  auto [producer, events] = Events::make();
  const auto waiting = testing::startOn(scheduler, nextBatch(events));
  scheduler.run();
  EXPECT_TRUE(producer.yieldAll(EventBatch<std::string>()));
  scheduler.run();
  EXPECT_FALSE(waiting->isSet());
  EXPECT_TRUE(producer.yieldAll(numbers(0, 1)));
  scheduler.run();
  EXPECT_EQ(waiting->take(), std::vector<std::string>{"0"});
}

Task<std::size_t> countInBatches(Events& events) {
  std::size_t count = 0;
  for (;;) {
    auto batch = co_await events.nextBatch();
    if (batch.empty()) co_return count;
    count += batch.size();
  }
}

TEST(EventBatches, ReachTheirConsumerFromManyThreads) {
  auto ends = Events::make();
  const auto counting = testing::startOn(productionScheduler(), countInBatches(ends.second));
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([producer = ends.first] {
      for (int round = 0; round < 500; ++round) producer.yieldAll(numbers(0, round % 7));
    });
  }
  for (auto& thread : threads) thread.join();
  ends.first.finish();
  counting->waitUntilSet();
  std::size_t expected = 0;
  for (std::size_t round = 0; round < 500; ++round) expected += 4 * (round % 7);
  EXPECT_EQ(counting->take(), expected);
}

}  // namespace
}  // namespace ormel
