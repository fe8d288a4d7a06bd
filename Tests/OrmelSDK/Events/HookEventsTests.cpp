#include "OrmelSDK/Events/HookEvents.h"

#include <gtest/gtest.h>

#include "Support/CodingChecks.h"
#include "Support/RecordChecks.h"

namespace {

using namespace ormel;
using tests::decoded;

constexpr std::string_view wholeRun = R"({"id":"h","eventName":"postToolUse","handlerType":"prompt",
  "executionMode":"async","scope":"turn","sourcePath":"/h","source":"project","displayOrder":3,"status":"blocked",
  "statusMessage":"s","startedAt":1700000000000,"completedAt":1700000000005,"durationMs":5,
  "entries":[{"kind":"feedback","text":"x"}]})";

HookRunSummary wholeRunRecord() {
  HookRunSummary run;
  run.id = "h";
  run.eventName = HookEventName::postToolUse;
  run.handlerType = HookHandlerType::prompt;
  run.executionMode = HookExecutionMode::async;
  run.scope = HookScope::turn;
  run.sourcePath = "/h";
  run.source = HookSource::project;
  run.displayOrder = 3;
  run.status = HookRunStatus::blocked;
  run.statusMessage = "s";
  run.startedAt = 1'700'000'000'000;
  run.completedAt = 1'700'000'000'005;
  run.durationMilliseconds = 5;
  run.entries = {{HookOutputEntryKind::feedback, "x"}};
  return run;
}

std::string eventOfRun(std::string_view before) { return std::string(before) + std::string(wholeRun) + "}"; }

TEST(Hooks, FollowTheirTables) {
  tests::checkRecord<HookOutputEntry>(R"({"kind":"feedback","text":"x"})");
  tests::checkRecord<HookRunSummary>(wholeRun);
  tests::checkRecord<HookStartedEvent>(eventOfRun(R"({"thread_id":"t","turn_id":"u","run":)"));
  tests::checkRecord<HookCompletedEvent>(eventOfRun(R"({"thread_id":"t","turn_id":"u","run":)"));
}

TEST(HookRunSummary, IsReadAndWrittenWhole) {
  EXPECT_EQ(decoded<HookRunSummary>(wholeRun), wholeRunRecord());
  tests::expectWritten(wholeRunRecord(), wholeRun);
}

TEST(HookRunSummary, WritesNothingForWhatIsAbsent) {
  constexpr std::string_view least = R"({"id":"h","eventName":"stop","handlerType":"command","executionMode":"sync",
    "scope":"thread","sourcePath":"/h","source":"user","displayOrder":0,"status":"running","startedAt":1,
    "entries":[]})";
  tests::expectWritten(decoded<HookRunSummary>(least), least);
}

TEST(HookStartedEvent, IsWrittenWithItsTurnIfItHasOne) {
  tests::expectWritten(HookStartedEvent{"t", {}, wholeRunRecord()}, eventOfRun(R"({"thread_id":"t","run":)"));
  tests::expectWritten(HookCompletedEvent{"t", "u", wholeRunRecord()},
                       eventOfRun(R"({"thread_id":"t","turn_id":"u","run":)"));
}

TEST(HookEnumerations, HaveAWordForEachCase) {
  tests::checkWords<HookExecutionMode>({{HookExecutionMode::sync, "sync"}, {HookExecutionMode::async, "async"}});
  tests::checkWords<HookScope>({{HookScope::thread, "thread"}, {HookScope::turn, "turn"}});
  tests::checkWords<HookRunStatus>({{HookRunStatus::running, "running"},
                                    {HookRunStatus::completed, "completed"},
                                    {HookRunStatus::failed, "failed"},
                                    {HookRunStatus::blocked, "blocked"},
                                    {HookRunStatus::stopped, "stopped"}});
  tests::checkWords<HookOutputEntryKind>({{HookOutputEntryKind::warning, "warning"},
                                          {HookOutputEntryKind::stop, "stop"},
                                          {HookOutputEntryKind::feedback, "feedback"},
                                          {HookOutputEntryKind::context, "context"},
                                          {HookOutputEntryKind::error, "error"}});
}

TEST(HookEnumerations, ThatAreClosedReadNoOtherWord) {
  tests::checkStrictness<HookExecutionMode>("HookExecutionMode", {"Sync", "weird", ""});
  tests::checkStrictness<HookScope>("HookScope", {"THREAD", "weird"});
  tests::checkStrictness<HookRunStatus>("HookRunStatus", {"Running", "weird", " running"});
  tests::checkStrictness<HookOutputEntryKind>("HookOutputEntryKind", {"Stop", "weird"});
}

}  // namespace
