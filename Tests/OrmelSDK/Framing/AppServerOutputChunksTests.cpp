#include "OrmelSDK/AppServerRun/AppServerOutputChunks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "OrmelSDK/Platform/SystemProcessLauncher.h"
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
