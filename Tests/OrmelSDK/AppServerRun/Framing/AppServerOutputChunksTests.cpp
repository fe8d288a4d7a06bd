#include "OrmelSDK/AppServerRun/Framing/AppServerOutputChunks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "OrmelSDK/Platform/SystemProcessLauncher.h"
#include "Support/Eventually.h"
#include "Support/RecordedChild.h"

namespace ormel::detail {

namespace {

using testing::shell;

/// A real child and the promise of its end.
class Child {
 public:
  explicit Child(std::string script) {
    auto ended = std::make_shared<std::promise<Termination>>();
    termination_ = ended->get_future();
    child_ = SystemProcessLauncher::shared().launch(
        shell(std::move(script)), [ended](const Termination& termination) { ended->set_value(termination); });
  }

  std::shared_ptr<PipeReader> output() { return child_->output(); }
  void write(std::string line) { child_->write(std::move(line)); }
  void closeInput() { child_->closeInput(); }
  Termination waitForEnd() { return termination_.get(); }

 private:
  std::unique_ptr<ChildProcess> child_;
  std::future<Termination> termination_;
};

TEST(AppServerOutputChunks, DeliversAllBytesInOrderAndThenEnds) {
  Child child("i=0; while [ $i -lt 500 ]; do echo \"line $i\"; i=$((i+1)); done");
  auto chunks = appServerOutputChunks(child.output());
  std::string bytes;
  for (const auto& chunk : chunks) bytes += chunk.view();
  std::string expected;
  for (int line = 0; line < 500; ++line) expected += "line " + std::to_string(line) + "\n";
  EXPECT_EQ(bytes, expected);
}

TEST(AppServerOutputChunks, TellsOfEachStepBeforeTheConsumerCanSeeIt) {
  Child child("printf one; printf two");
  std::atomic<int> reads{0};
  std::atomic<int> enqueued{0};
  std::atomic<bool> ended{false};
  AppServerOutputChunkCallbacks callbacks;
  callbacks.onReadStart = [&] { ++reads; };
  callbacks.onChunkEnqueued = [&] {
    EXPECT_GT(reads.load(), enqueued.load());
    ++enqueued;
  };
  callbacks.onEOF = [&] {
    EXPECT_GT(reads.load(), enqueued.load());
    ended = true;
  };
  auto chunks = appServerOutputChunks(child.output(), callbacks);
  int consumed = 0;
  while (chunks.nextBlocking()) {
    ++consumed;
    EXPECT_GE(enqueued.load(), consumed);
  }
  EXPECT_TRUE(ended);
  EXPECT_EQ(consumed, enqueued.load());
  EXPECT_EQ(reads.load(), enqueued.load() + 1);
}

/// Looks at the pipe and at the channel from within the callbacks. The child writes only after `watch`.
class WatchedSteps {
 public:
  EventChannel<ByteBuffer> chunksOf(const std::shared_ptr<PipeReader>& pipe) {
    AppServerOutputChunkCallbacks callbacks;
    callbacks.onReadStart = [this, pipe] { add(pipe->hasUnreadBytes() ? "start, unread" : "start, nothing unread"); };
    callbacks.onChunkEnqueued = [this] { add(isReady() ? "chunk, ready" : "chunk, not ready"); };
    callbacks.onEOF = [this] { add(isReady() ? "end, ready" : "end, not ready"); };
    return appServerOutputChunks(pipe, callbacks);
  }

  void watch(EventChannel<ByteBuffer>& chunks) { chunks_ = &chunks; }

  /// The first two steps, once they have been.
  std::vector<std::string> firstTwo() {
    const auto both = [this] {
      const std::lock_guard lock(mutex_);
      return steps_.size() >= 2;
    };
    EXPECT_TRUE(testing::eventually(both));
    const std::lock_guard lock(mutex_);
    return steps_;
  }

 private:
  bool isReady() const { return chunks_.load()->isReady(); }
  void add(std::string step) {
    const std::lock_guard lock(mutex_);
    steps_.push_back(std::move(step));
  }

  std::atomic<EventChannel<ByteBuffer>*> chunks_ = nullptr;
  std::mutex mutex_;
  std::vector<std::string> steps_;
};

TEST(AppServerOutputChunks, TellsOfAReadBeforeItEmptiesThePipeAndOfAChunkBeforeItCanBeTaken) {
  Child child("read line; printf one; read line");
  WatchedSteps steps;
  auto chunks = steps.chunksOf(child.output());
  steps.watch(chunks);
  child.write("go\n");
  EXPECT_EQ(steps.firstTwo(), (std::vector<std::string>{"start, unread", "chunk, not ready"}));
  EXPECT_EQ(chunks.nextBlocking()->view(), "one");
  child.closeInput();
  EXPECT_FALSE(chunks.nextBlocking());
}

TEST(AppServerOutputChunks, TellsOfTheEndBeforeItCanBeSeen) {
  Child child("read line");
  WatchedSteps steps;
  auto chunks = steps.chunksOf(child.output());
  steps.watch(chunks);
  child.closeInput();
  EXPECT_EQ(steps.firstTwo(), (std::vector<std::string>{"start, nothing unread", "end, not ready"}));
  EXPECT_FALSE(chunks.nextBlocking());
}

TEST(AppServerOutputChunks, StopsReadingWhenTheConsumerGoesAway) {
  Child child("while :; do echo more; done");
  {
    auto chunks = appServerOutputChunks(child.output());
    EXPECT_TRUE(chunks.nextBlocking());
  }
  // Nobody reads any longer, so the child runs into a broken pipe.
  const Termination end = child.waitForEnd();
  EXPECT_TRUE(end.reason == TerminationReason::uncaughtSignal || end.status != 0);
}

TEST(AppServerOutputChunks, EndsForAChildThatWritesNothing) {
  Child child("exit 0");
  auto chunks = appServerOutputChunks(child.output());
  EXPECT_FALSE(chunks.nextBlocking());
}

}  // namespace

}  // namespace ormel::detail
