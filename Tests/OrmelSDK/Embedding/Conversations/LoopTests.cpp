#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "OrmelSDK/Embedding/EmbeddedServer.h"
#include "OrmelSDK/LoopScheduler.h"
#include "Support/Eventually.h"
#include "Support/ProcessResources.h"

namespace ormel {
namespace {

using testing::embeddedTurnWithApproval;
using testing::optionsFor;
using testing::ProcessResources;
using testing::SimulatorScenario;

/// An application's loop on the calling thread.
template <typename Condition>
void runUntil(LoopScheduler& loop, Condition&& reached) {
  while (!reached()) {
    const auto next = loop.timeToNextTimer();
    pollfd watched{loop.descriptor(), POLLIN, 0};
    const auto wait =
        next ? *next / std::chrono::milliseconds(1) + 1 : testing::patience / std::chrono::milliseconds(1);
    if (::poll(&watched, 1, static_cast<int>(wait)) == 0 && !next) throw std::runtime_error("nothing happens");
    loop.runReady();
  }
}

/// Each thing that happens, and whether it did on the loop.
class Diary {
 public:
  explicit Diary(LoopScheduler& loop) : loop_(loop) {}

  void note(std::string what) { lines_.push_back(std::move(what) + (loop_.isCurrent() ? "" : " elsewhere")); }
  const std::vector<std::string>& lines() const { return lines_; }

 private:
  LoopScheduler& loop_;
  std::vector<std::string> lines_;
};

Task<OrmelApprovalDecision> decideOn(LoopScheduler& loop, Diary& diary) {
  co_await loop.enter();
  diary.note("asked");
  co_return OrmelApprovalDecision::decline;
}

Task<void> talk(Thread thread, Diary& diary) {
  auto running = thread.runStreamed("go");
  StreamedTurn turn = co_await std::move(running);
  while (auto event = co_await turn.events.next()) diary.note("event");
  diary.note("end");
  auto closing = thread.close();
  co_await std::move(closing);
  diary.note("closed");
}

TEST(LoopOfTheApplication, HoldsAConversation) {
  const auto before = ProcessResources::now();
  {
    LoopScheduler loop;
    Diary diary(loop);
    const SimulatorScenario scenario(embeddedTurnWithApproval);
    ThreadOptions options;
    options.commandApprovalHandler = [&](const CommandApprovalRequest&) { return decideOn(loop, diary); };
    bool isDone = false;
    talk(Ormel(optionsFor(scenario)).startThread(options), diary).onScheduler(loop).start([&](TaskResult<void> result) {
      result.take();
      diary.note("done");
      isDone = true;
    });
    runUntil(loop, [&] { return isDone; });
    EXPECT_THAT(diary.lines(), ::testing::IsSupersetOf({"asked", "event", "end", "closed", "done"}));
    EXPECT_THAT(diary.lines(), ::testing::Not(::testing::Contains(::testing::HasSubstr("elsewhere"))));
  }
  EXPECT_TRUE(testing::eventually([&] { return ProcessResources::now().descriptors <= before.descriptors + 4; }));
}

}  // namespace
}  // namespace ormel
