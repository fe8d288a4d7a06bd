#include "OrmelSDK/AppServerRun/Framing/StandardErrorCollector.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <utility>

#include "Support/ConcurrencySchedulers.h"
#include "Support/InMemoryPipe.h"

namespace {

using namespace ormel;
using namespace ormel::detail;
using namespace ormel::testing;
using namespace std::chrono_literals;

Task<void> noteSettled(std::shared_ptr<StandardErrorCollector> output, Scheduler& scheduler, bool& isSettled) {
  co_await StandardErrorCollector::settled(std::move(output), scheduler, 100ms);
  isSettled = true;
}

TEST(StandardErrorCollector, CollectsAndTrimsWhatIsWritten) {
  underSeeds(10, [](SimulatedScheduler& scheduler) {
    const auto pipe = std::make_shared<InMemoryPipe>(scheduler);
    const auto output = std::make_shared<StandardErrorCollector>(std::make_shared<AppServerLockedData>());
    output->start(pipe);
    EXPECT_EQ(output->text(), "");
    pipe->write(" first \n");
    scheduler.run();
    pipe->write("second\n\n");
    pipe->closeWriteEnd();
    scheduler.run();
    EXPECT_EQ(output->text(), "first \nsecond");
  });
}

TEST(StandardErrorCollector, HasSettledWhenNothingIsUnderWay) {
  underSeeds(10, [](SimulatedScheduler& scheduler) {
    const auto pipe = std::make_shared<InMemoryPipe>(scheduler);
    const auto output = std::make_shared<StandardErrorCollector>(std::make_shared<AppServerLockedData>());
    output->start(pipe);
    scheduler.run();
    bool isSettled = false;
    startOn(scheduler, noteSettled(output, scheduler, isSettled));
    scheduler.runFor(0ns);
    EXPECT_TRUE(isSettled);
    pipe->stop();
    scheduler.run();
  });
}

/// A pipe whose reads begin and end when the test says so.
class ManualPipe final : public PipeReader {
 public:
  void start(PipeReadHandlers handlers) override { handlers_ = std::move(handlers); }
  void stop() noexcept override { handlers_ = {}; }
  bool hasUnreadBytes() const noexcept override { return false; }
  const PipeReadHandlers& handlers() const noexcept { return handlers_; }

 private:
  PipeReadHandlers handlers_;
};

TEST(StandardErrorCollector, SettlesOnceAReadHasFoundNothing) {
  underSeeds(10, [](SimulatedScheduler& scheduler) {
    const auto pipe = std::make_shared<ManualPipe>();
    const auto output = std::make_shared<StandardErrorCollector>(std::make_shared<AppServerLockedData>());
    output->start(pipe);
    pipe->handlers().onReadStart();
    bool isSettled = false;
    startOn(scheduler, noteSettled(output, scheduler, isSettled));
    scheduler.runFor(0ns);
    EXPECT_FALSE(isSettled);
    pipe->handlers().onNothing();
    scheduler.runFor(0ns);
    EXPECT_TRUE(isSettled);
    pipe->stop();
  });
}

TEST(StandardErrorCollector, SettlesBehindWhatIsUnderWay) {
  underSeeds(20, [](SimulatedScheduler& scheduler) {
    const auto pipe = std::make_shared<InMemoryPipe>(scheduler);
    const auto output = std::make_shared<StandardErrorCollector>(std::make_shared<AppServerLockedData>());
    output->start(pipe);
    pipe->write("the last words");
    pipe->closeWriteEnd();
    bool isSettled = false;
    startOn(scheduler, noteSettled(output, scheduler, isSettled));
    scheduler.runUntil([&isSettled] { return isSettled; });
    EXPECT_EQ(output->text(), "the last words");
    EXPECT_EQ(scheduler.now(), 0U);
    scheduler.run();
  });
}

TEST(StandardErrorCollector, AddsToWhatAnEarlierProcessLeftInTheAccumulator) {
  SimulatedScheduler scheduler(1);
  const auto accumulator = std::make_shared<AppServerLockedData>();
  for (const char* const words : {" first\n", "second "}) {
    const auto pipe = std::make_shared<InMemoryPipe>(scheduler);
    const auto output = std::make_shared<StandardErrorCollector>(accumulator);
    output->start(pipe);
    pipe->write(words);
    pipe->closeWriteEnd();
    scheduler.run();
  }
  EXPECT_EQ(StandardErrorCollector(accumulator).text(), "first\nsecond");
  EXPECT_EQ(accumulator->string(), " first\nsecond ");
}

}  // namespace
