#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <latch>
#include <memory>
#include <string>
#include <utility>

#include "OrmelSDK/Concurrency/Sleep.h"
#include "OrmelSDK/Embedding/EmbeddedServer.h"
#include "Support/Eventually.h"
#include "Support/ProcessResources.h"

namespace ormel {
namespace {

using testing::embeddedTurn;
using testing::embeddedTurnEnds;
using testing::eventually;
using testing::optionsFor;
using testing::SimulatorScenario;

constexpr int blockedCount = 200;

/// Holds all that wait until it is opened.
class Gate {
 public:
  ~Gate() { open(); }
  void wait() const { opened_.wait(); }
  void open() {
    if (!std::exchange(isOpen_, true)) promise_.set_value();
  }

 private:
  bool isOpen_ = false;
  std::promise<void> promise_;
  std::shared_future<void> opened_ = promise_.get_future().share();
};

std::size_t threadCount() { return testing::ProcessResources::now().threads; }

std::string manyApprovals() {
  std::string text;
  for (int asked = 0; asked < blockedCount; ++asked) text += std::string(testing::asksForApproval) + "\n";
  return text;
}

TEST(BlockedHandlers, HoldUpNoEventAndNoInterruptOfOthersAndTheirThreadsEndAgain) {
  const auto gate = std::make_shared<Gate>();
  std::atomic<int> blocked{0};
  const SimulatorScenario blocking(embeddedTurn + manyApprovals() + "client asks turn/interrupt\nserver answers {}\n" +
                                   embeddedTurnEnds);
  const auto threadOptions = testing::whenAskedForApproval([gate, &blocked] {
    ++blocked;
    gate->wait();
  });
  auto held = Ormel(optionsFor(blocking)).startThread(threadOptions);
  auto heldTurn = held.runStreamed("go").get();
  ASSERT_TRUE(eventually([&] { return blocked == blockedCount; })) << blocked;

  const SimulatorScenario other(embeddedTurn + embeddedTurnEnds + testing::turnIsAccepted +
                                "client asks turn/interrupt\nserver answers {}\n" + embeddedTurnEnds);
  auto thread = Ormel(optionsFor(other)).startThread();
  EXPECT_EQ(thread.run("while they wait").get().items.size(), 0U);
  auto turn = thread.runStreamed("another").get();
  thread.interrupt().get();
  EXPECT_EQ(testing::told(turn.events).back(), "end");
  held.interrupt().get();

  EXPECT_GE(threadCount(), std::size_t{blockedCount});
  gate->open();
  EXPECT_TRUE(eventually([] { return threadCount() < 10; })) << threadCount();
  EXPECT_EQ(other.failures(), std::vector<std::string>());
}

TEST(BlockedCallbacks, OfStartHoldUpNoEventOfOthers) {
  constexpr int count = 4;
  const auto gate = std::make_shared<Gate>();
  std::latch blocked(count);
  const SimulatorScenario scenario(embeddedTurn + embeddedTurnEnds + testing::turnIsAccepted + embeddedTurnEnds);
  auto thread = Ormel(optionsFor(scenario)).startThread();
  thread.run("first").get();
  for (int started = 0; started < count; ++started) {
    sleepFor(productionScheduler(), std::chrono::milliseconds(1)).start([gate, &blocked](const TaskResult<void>&) {
      blocked.count_down();
      gate->wait();
    });
  }
  blocked.wait();
  thread.run("second").get();
}

TEST(BlockedCoroutines, OfTheApplicationHoldUpNoEventOfOthers) {
  constexpr int count = 4;
  const auto gate = std::make_shared<Gate>();
  std::latch blocked(count);
  std::latch ended(count);
  const SimulatorScenario scenario(embeddedTurn + embeddedTurnEnds + testing::turnIsAccepted + embeddedTurnEnds);
  auto thread = Ormel(optionsFor(scenario)).startThread();
  thread.run("first").get();
  const auto blocking = [&]() -> Task<void> {
    co_await sleepFor(productionScheduler(), std::chrono::milliseconds(1));
    blocked.count_down();
    gate->wait();
    ended.count_down();
  };
  for (int started = 0; started < count; ++started) blocking().detach();
  blocked.wait();
  thread.run("second").get();
  gate->open();
  ended.wait();
}

TEST(BlockedCallers, AreRefusedToWaitForATaskInAHandler) {
  const SimulatorScenario scenario(testing::embeddedTurnWithApproval);
  std::promise<std::string> refusal;
  ThreadOptions threadOptions;
  threadOptions.commandApprovalHandler = [&refusal](const CommandApprovalRequest&) {
    const auto trivial = []() -> Task<void> { co_return; };
    refusal.set_value(testing::failureOf([&] { trivial().get(); }));
    return OrmelApprovalDecision::decline;
  };
  Ormel(optionsFor(scenario)).startThread(threadOptions).run("go").get();
  EXPECT_EQ(refusal.get_future().get(),
            "other error: A blocking wait on a thread of the library would deadlock; use co_await instead");
}

}  // namespace
}  // namespace ormel
