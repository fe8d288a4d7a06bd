#include "OrmelSDK/Events/ThreadEvent.h"

#include <gtest/gtest.h>

#include <concepts>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "Support/CodingChecks.h"
#include "Support/RecordChecks.h"

namespace {

using namespace ormel;
using tests::decoded;
using tests::failureOf;

struct Example {
  ThreadEvent event;
  std::string_view text;
};

ThreadItem item() { return decoded<ThreadItem>(R"({"type":"agent_message","id":"a","text":"x"})"); }

ThreadGoal goal() { return {"t", "o", ThreadGoalStatus::active, std::nullopt, 1, 2, 3, 4}; }

HookRunSummary run() {
  return decoded<HookRunSummary>(R"({"id":"h","eventName":"stop","handlerType":"agent","executionMode":"sync",
    "scope":"turn","sourcePath":"/h","source":"user","displayOrder":1,"status":"running","startedAt":2,"entries":[]})");
}

ThreadSettings settings() {
  return decoded<ThreadSettings>(R"({"cwd":"/w","approvalPolicy":"never","approvalsReviewer":"user",
    "sandboxPolicy":{},"model":"m","modelProvider":"p","collaborationMode":"plan"})");
}

GuardianApprovalReview review() { return {GuardianApprovalReviewStatus::timedOut, {}, {}, {}, {}}; }

GuardianApprovalReviewAction action() { return GuardianApplyPatchReviewAction{"/", {"a"}}; }

/// Every case in the order of declaration, with all that may be absent and without it; the texts are what is written.
std::vector<Example> examples() {
  return {
      {ThreadStartedEvent{"t", "f", {"a", "b"}},
       R"({"type":"thread.started","thread_id":"t","forked_from_id":"f","instruction_sources":["a","b"]})"},
      {ThreadStartedEvent{"t", {}, {}}, R"({"type":"thread.started","thread_id":"t"})"},
      {TurnStartedEvent{9}, R"({"type":"turn.started","model_context_window":9})"},
      {TurnStartedEvent{}, R"({"type":"turn.started"})"},
      {HookStartedEvent{"t", "u", run()},
       R"({"type":"hook.started","thread_id":"t","turn_id":"u","run":{"id":"h","eventName":"stop",
           "handlerType":"agent","executionMode":"sync","scope":"turn","sourcePath":"/h","source":"user",
           "displayOrder":1,"status":"running","startedAt":2,"entries":[]}})"},
      {HookStartedEvent{"t", {}, run()},
       R"({"type":"hook.started","thread_id":"t","run":{"id":"h","eventName":"stop",
           "handlerType":"agent","executionMode":"sync","scope":"turn","sourcePath":"/h","source":"user",
           "displayOrder":1,"status":"running","startedAt":2,"entries":[]}})"},
      {TurnCompletedEvent{{6, 3, 1, 2, 9}},
       R"({"type":"turn.completed","usage":{"total_tokens":6,"input_tokens":3,"cached_input_tokens":1,
           "output_tokens":2,"model_context_window":9}})"},
      {HookCompletedEvent{"t", "u", run()},
       R"({"type":"hook.completed","thread_id":"t","turn_id":"u","run":{"id":"h","eventName":"stop",
           "handlerType":"agent","executionMode":"sync","scope":"turn","sourcePath":"/h","source":"user",
           "displayOrder":1,"status":"running","startedAt":2,"entries":[]}})"},
      {HookCompletedEvent{"t", {}, run()},
       R"({"type":"hook.completed","thread_id":"t","run":{"id":"h","eventName":"stop",
           "handlerType":"agent","executionMode":"sync","scope":"turn","sourcePath":"/h","source":"user",
           "displayOrder":1,"status":"running","startedAt":2,"entries":[]}})"},
      {TurnFailedEvent{{"m"}}, R"({"type":"turn.failed","error":{"message":"m"}})"},
      {ThreadGoalUpdatedEvent{"t", "u", goal()},
       R"({"type":"thread.goal.updated","thread_id":"t","turn_id":"u","goal":{"thread_id":"t","objective":"o",
           "status":"active","tokensUsed":1,"timeUsedSeconds":2,"createdAt":3,"updatedAt":4}})"},
      {ThreadGoalUpdatedEvent{"t", {}, goal()},
       R"({"type":"thread.goal.updated","thread_id":"t","goal":{"thread_id":"t","objective":"o",
           "status":"active","tokensUsed":1,"timeUsedSeconds":2,"createdAt":3,"updatedAt":4}})"},
      {ThreadGoalClearedEvent{"t"}, R"({"type":"thread.goal.cleared","thread_id":"t"})"},
      {ThreadSettingsUpdatedEvent{"t", settings()},
       R"({"type":"thread.settings.updated","thread_id":"t","threadSettings":{"cwd":"/w","approvalPolicy":"never",
           "approvalsReviewer":"user","sandboxPolicy":{},"model":"m","modelProvider":"p",
           "collaborationMode":"plan"}})"},
      {ItemStartedEvent{item(), "t", "u", 5},
       R"({"type":"item.started","thread_id":"t","turn_id":"u","startedAtMs":5,
           "item":{"type":"agent_message","id":"a","text":"x"}})"},
      {ItemStartedEvent{item(), {}, {}, {}},
       R"({"type":"item.started","item":{"type":"agent_message","id":"a","text":"x"}})"},
      {ItemUpdatedEvent{item()}, R"({"type":"item.updated","item":{"type":"agent_message","id":"a","text":"x"}})"},
      {ItemCompletedEvent{item(), "t", "u", 5},
       R"({"type":"item.completed","thread_id":"t","turn_id":"u","completedAtMs":5,
           "item":{"type":"agent_message","id":"a","text":"x"}})"},
      {ItemCompletedEvent{item(), {}, {}, {}},
       R"({"type":"item.completed","item":{"type":"agent_message","id":"a","text":"x"}})"},
      {GuardianApprovalReviewStartedEvent{"t", "u", "i", "r", review(), action()},
       R"({"type":"item.autoApprovalReview.started","thread_id":"t","turn_id":"u","target_item_id":"i","review_id":"r",
           "review":{"status":"timedOut"},"action":{"type":"applyPatch","cwd":"/","files":["a"]}})"},
      {GuardianApprovalReviewStartedEvent{"t", "u", {}, "r", review(), action()},
       R"({"type":"item.autoApprovalReview.started","thread_id":"t","turn_id":"u","review_id":"r",
           "review":{"status":"timedOut"},"action":{"type":"applyPatch","cwd":"/","files":["a"]}})"},
      {GuardianApprovalReviewCompletedEvent{"t", "u", "i", "r", AutoReviewDecisionSource::agent, review(), action()},
       R"({"type":"item.autoApprovalReview.completed","thread_id":"t","turn_id":"u","target_item_id":"i",
           "review_id":"r","decision_source":"agent","review":{"status":"timedOut"},
           "action":{"type":"applyPatch","cwd":"/","files":["a"]}})"},
      {GuardianApprovalReviewCompletedEvent{"t", "u", {}, "r", AutoReviewDecisionSource::agent, review(), action()},
       R"({"type":"item.autoApprovalReview.completed","thread_id":"t","turn_id":"u",
           "review_id":"r","decision_source":"agent","review":{"status":"timedOut"},
           "action":{"type":"applyPatch","cwd":"/","files":["a"]}})"},
      {ThreadWarningEvent{"t", "m"}, R"({"type":"warning","thread_id":"t","message":"m"})"},
      {ThreadWarningEvent{{}, "m"}, R"({"type":"warning","message":"m"})"},
      {GuardianWarningEvent{"t", "m"}, R"({"type":"guardian.warning","thread_id":"t","message":"m"})"},
      {AuthRecoveryStartedEvent{{"t", "u", "p", "m"}},
       R"({"type":"modelProvider.authRecoveryStarted","thread_id":"t","turn_id":"u","provider":"p","message":"m"})"},
      {AuthRecoveryCompletedEvent{{"t", "u", "p", "m"}},
       R"({"type":"modelProvider.authRecoveryCompleted","thread_id":"t","turn_id":"u","provider":"p","message":"m"})"},
      {StrictReviewRequiredEvent{"t", "u", 5},
       R"({"type":"autoApprovalReview.strictReviewRequired","thread_id":"t","turn_id":"u","startedAtMs":5})"},
      {DeprecationNoticeEvent{"s", "d"}, R"({"type":"deprecationNotice","summary":"s","details":"d"})"},
      {DeprecationNoticeEvent{"s", {}}, R"({"type":"deprecationNotice","summary":"s"})"},
      {ConfigWarningEvent{"s", "d", "/p", TextRange{{1, 2}, {3, 4}}},
       R"({"type":"configWarning","summary":"s","details":"d","path":"/p",
           "range":{"start":{"line":1,"column":2},"end":{"line":3,"column":4}}})"},
      {ConfigWarningEvent{"s", {}, {}, {}}, R"({"type":"configWarning","summary":"s"})"},
      {ModelVerificationEvent{"t", "u", {}},
       R"({"type":"model.verification","thread_id":"t","turn_id":"u","verifications":[]})"},
      {ModelReroutedEvent{"t", "u", "a", "b", "r"},
       R"({"type":"model.rerouted","thread_id":"t","turn_id":"u","fromModel":"a","toModel":"b","reason":"r"})"},
      {ModelSafetyBufferingUpdatedEvent{"t", "u", "m", {"c"}, {"r"}, true, "f"},
       R"({"type":"model.safetyBuffering.updated","thread_id":"t","turn_id":"u","model":"m","useCases":["c"],
           "reasons":["r"],"showBufferingUi":true,"fasterModel":"f"})"},
      {ModelSafetyBufferingUpdatedEvent{"t", "u", "m", {}, {}, false, {}},
       R"({"type":"model.safetyBuffering.updated","thread_id":"t","turn_id":"u","model":"m","useCases":[],
           "reasons":[],"showBufferingUi":false})"},
      {TurnModerationMetadataEvent{"t", "u", JSONValue::decode(R"({"a":[null]})")},
       R"({"type":"turn.moderationMetadata","thread_id":"t","turn_id":"u","metadata":{"a":[null]}})"},
      {ThreadErrorEvent{"m"}, R"({"type":"error","message":"m"})"},
      {UnknownThreadEvent{"future.event"}, R"({"type":"future.event"})"},
  };
}

TEST(ThreadEvent, WritesExactlyTheKeysOfItsCase) {
  for (const auto& [event, text] : examples()) tests::expectWritten(event, text);
}

TEST(ThreadEvent, ReadsBackWhatItWrites) {
  for (const auto& [event, text] : examples()) EXPECT_EQ(decoded<ThreadEvent>(text), event);
}

TEST(ThreadEvent, HasTwentySevenCasesAndExamplesOfEach) {
  constexpr std::size_t cases = 27;
  EXPECT_EQ(std::variant_size_v<ThreadEvent::Value>, cases);
  std::vector<std::size_t> order;
  for (const auto& example : examples()) {
    if (order.empty() || order.back() != example.event.value.index()) order.push_back(example.event.value.index());
  }
  ASSERT_EQ(order.size(), cases);
  for (std::size_t index = 0; index < cases; ++index) EXPECT_EQ(order[index], index);
}

TEST(ThreadEvent, DiffersFromEveryOtherExample) {
  const auto all = examples();
  for (std::size_t left = 0; left < all.size(); ++left) {
    for (std::size_t right = 0; right < all.size(); ++right) {
      EXPECT_EQ(all[left].event == all[right].event, left == right) << all[left].text << all[right].text;
    }
  }
}

TEST(ThreadEvent, ReadsTheOtherSpellingsOfATypeAndWritesTheFirst) {
  for (const auto& [spelling, first] : {
           std::pair{"item.auto_approval_review.started", "item.autoApprovalReview.started"},
           {"item.auto_approval_review.completed", "item.autoApprovalReview.completed"},
           {"guardianWarning", "guardian.warning"},
           {"model.safety_buffering.updated", "model.safetyBuffering.updated"},
           {"turn.moderation_metadata", "turn.moderationMetadata"},
       }) {
    int found = 0;
    for (const auto& [event, text] : examples()) {
      const auto written = JSONValue::decode(text);
      if (*written.find("type") != JSONValue(first)) continue;
      ++found;
      const JSONValue type(spelling);
      EXPECT_EQ(decode<ThreadEvent>(tests::changed(written, "type", "type", &type)), event);
    }
    EXPECT_GT(found, 0) << spelling;
  }
}

TEST(ThreadEvent, ComparesTheTypeExactly) {
  for (const char* type :
       {"Thread.Started", "thread_started", " warning", "warning ", "deprecation_notice", "config_warning",
        "model_provider.auth_recovery_started", "auto_approval_review.strict_review_required", "unknown", ""}) {
    const auto event = decode<ThreadEvent>(JSONValue::object({{"type", type}, {"message", "m"}, {"thread_id", "t"}}));
    EXPECT_EQ(event, UnknownThreadEvent{type});
  }
}

TEST(ThreadEvent, KeepsOnlyTheTypeOfWhatItDoesNotKnow) {
  const auto event = decoded<ThreadEvent>(R"({"type":"future.event","thread_id":"t"})");
  EXPECT_EQ(event, UnknownThreadEvent{"future.event"});
  tests::expectWritten(event, R"({"type":"future.event"})");
}

TEST(ThreadEvent, FailsWithoutATypeThatIsAText) {
  EXPECT_EQ(failureOf<ThreadEvent>("{}"), "No value is associated with the key 'type'.");
  EXPECT_EQ(failureOf<ThreadEvent>(R"({"type":3})"), "Expected String but found a number.");
  EXPECT_EQ(failureOf<ThreadEvent>(R"({"type":null})"), "Expected String but found null.");
  EXPECT_EQ(failureOf<ThreadEvent>("3"), "Expected ThreadEvent but found a number.");
}

TEST(ThreadEvent, OfAKnownTypeWithAMalformedBodyIsAnErrorThatNamesTheLastKeyTried) {
  for (const auto& [type, key] : {
           std::pair{"thread.started", "threadId"},
           {"hook.started", "threadId"},
           {"turn.completed", "usage"},
           {"hook.completed", "threadId"},
           {"turn.failed", "error"},
           {"thread.goal.updated", "threadId"},
           {"thread.goal.cleared", "threadId"},
           {"thread.settings.updated", "threadId"},
           {"item.started", "item"},
           {"item.updated", "item"},
           {"item.completed", "item"},
           {"item.autoApprovalReview.started", "threadId"},
           {"item.auto_approval_review.started", "threadId"},
           {"item.autoApprovalReview.completed", "threadId"},
           {"item.auto_approval_review.completed", "threadId"},
           {"warning", "message"},
           {"guardian.warning", "threadId"},
           {"guardianWarning", "threadId"},
           {"modelProvider.authRecoveryStarted", "threadId"},
           {"modelProvider.authRecoveryCompleted", "threadId"},
           {"autoApprovalReview.strictReviewRequired", "threadId"},
           {"deprecationNotice", "summary"},
           {"configWarning", "summary"},
           {"model.verification", "threadId"},
           {"model.rerouted", "threadId"},
           {"model.safetyBuffering.updated", "threadId"},
           {"model.safety_buffering.updated", "threadId"},
           {"turn.moderationMetadata", "threadId"},
           {"turn.moderation_metadata", "threadId"},
           {"error", "message"},
       }) {
    tests::expectFailure<ThreadEvent>(JSONValue::object({{"type", type}}), DecodingError::Kind::keyNotFound, key, type);
  }
  EXPECT_EQ(failureOf<ThreadEvent>(R"({"type":"turn.started","model_context_window":"9"})"),
            "Expected Int but found a string.");
}

TEST(ThreadEvent, FailsWhenAnyOfTheKeysThatItsCaseWritesIsOfAnotherType) {
  for (const auto& [event, text] : examples()) {
    const auto written = JSONValue::decode(text);
    for (const auto& [key, value] : *written.objectValue()) {
      if (key == "type" || key == "metadata") continue;
      const JSONValue wrong = tests::ofAnotherType(value);
      EXPECT_THROW(decode<ThreadEvent>(tests::changed(written, key, key, &wrong)), DecodingError) << key << text;
    }
  }
}

TEST(ThreadEvent, ReadsIdsInEitherSpellingAndPrefersSnakeCase) {
  EXPECT_EQ(decoded<ThreadEvent>(R"({"type":"thread.started","threadId":"t"})"), (ThreadStartedEvent{"t", {}, {}}));
  EXPECT_EQ(decoded<ThreadEvent>(R"({"type":"thread.started","threadId":"camel","thread_id":"snake"})"),
            (ThreadStartedEvent{"snake", {}, {}}));
  EXPECT_EQ(decoded<ThreadEvent>(R"({"type":"thread.started","threadId":"camel","thread_id":null})"),
            (ThreadStartedEvent{"camel", {}, {}}));
  EXPECT_EQ(decoded<ThreadEvent>(R"({"type":"warning","threadId":"t","message":"m"})"), (ThreadWarningEvent{"t", "m"}));
  EXPECT_EQ(
      decoded<ThreadEvent>(R"({"type":"item.auto_approval_review.completed","threadId":"t","turnId":"u",
              "targetItemId":"i","reviewId":"r","decisionSource":"agent","review":{"status":"timed_out"},
              "action":{"type":"applyPatch","cwd":"/","files":["a"]}})"),
      (GuardianApprovalReviewCompletedEvent{"t", "u", "i", "r", AutoReviewDecisionSource::agent, review(), action()}));
}

TEST(ThreadEvent, ReadsInstructionSourcesInEitherSpellingAndPrefersCamelCase) {
  EXPECT_EQ(decoded<ThreadEvent>(R"({"type":"thread.started","thread_id":"t","instructionSources":["camel"],
              "instruction_sources":["snake"]})"),
            (ThreadStartedEvent{"t", {}, {"camel"}}));
  EXPECT_EQ(decoded<ThreadEvent>(R"({"type":"thread.started","thread_id":"t","instruction_sources":["snake"]})"),
            (ThreadStartedEvent{"t", {}, {"snake"}}));
}

TEST(ThreadEvent, SpellsTheSourcesOtherwiseThanItsRecordDoesByItself) {
  const ThreadStartedEvent started{"t", {}, {"a"}};
  tests::expectWritten(started, R"({"thread_id":"t","instructionSources":["a"]})");
  tests::expectWritten(ThreadEvent(started),
                       R"({"type":"thread.started","thread_id":"t","instruction_sources":["a"]})");
}

TEST(ThreadEvent, WritesNoEmptySourcesInEitherForm) {
  const ThreadStartedEvent started{"t", {}, {}};
  tests::expectWritten(started, R"({"thread_id":"t"})");
  tests::expectWritten(ThreadEvent(started), R"({"type":"thread.started","thread_id":"t"})");
}

TEST(ThreadEvent, ReadsTimesOfItemsInEitherSpellingAndWritesCamelCase) {
  const auto event = decoded<ThreadEvent>(
      R"({"type":"item.started","started_at_ms":5,"startedAtMs":6,"item":{"type":"agent_message","id":"a","text":"x"}})");
  EXPECT_EQ(event, (ItemStartedEvent{item(), {}, {}, 5}));
  tests::expectWritten(
      event, R"({"type":"item.started","startedAtMs":5,"item":{"type":"agent_message","id":"a","text":"x"}})");
}

TEST(ThreadEvent, IsAWarningWithoutAThreadButNoWarningOfTheGuardian) {
  EXPECT_EQ(decoded<ThreadEvent>(R"({"type":"warning","message":"m"})"), (ThreadWarningEvent{{}, "m"}));
  EXPECT_EQ(failureOf<ThreadEvent>(R"({"type":"guardian.warning","message":"m"})"),
            "No value is associated with the key 'threadId'.");
}

TEST(ThreadEvent, FailsAsItsItemDoes) {
  EXPECT_EQ(failureOf<ThreadEvent>(R"({"type":"item.updated","item":{"type":"future_thing"}})"),
            "Unknown item type: future_thing");
}

TEST(ThreadEvent, CarriesAnItemOfAnUnknownTypeThereAndBack) {
  constexpr std::string_view text = R"({"type":"item.updated","item":{"type":"future_thing","id":"x","a":1}})";
  tests::expectWritten(decoded<ThreadEvent>(text), text);
}

TEST(ThreadEvent, OfAnItemThatIsWrittenWithoutATypeDoesNotReadBack) {
  const auto event = decoded<ThreadEvent>(R"({"type":"item.updated","item":{"type":"plan","id":"p","text":"x"}})");
  EXPECT_EQ(encode(event), JSONValue::decode(R"({"type":"item.updated","item":{"id":"p","text":"x"}})"));
  EXPECT_THROW(decode<ThreadEvent>(encode(event)), DecodingError);
}

struct RecoveryProvider {
  std::string operator()(const AuthRecoveryEvent& recovery) const { return recovery.provider; }
  template <typename Event>
    requires(!std::derived_from<Event, AuthRecoveryEvent>)
  std::string operator()(const Event&) const {
    return "none";
  }
};

TEST(ThreadEvent, TellsBeginningAndEndOfARecoveryApartAndShowsThemAsOne) {
  const ThreadEvent started = AuthRecoveryStartedEvent{{"t", "u", "p", "m"}};
  const ThreadEvent completed = AuthRecoveryCompletedEvent{{"t", "u", "p", "m"}};
  EXPECT_FALSE(started == completed);
  EXPECT_EQ(visit(started, RecoveryProvider()), "p");
  EXPECT_EQ(visit(completed, RecoveryProvider()), "p");
  EXPECT_EQ(visit(ThreadEvent(ThreadErrorEvent{"m"}), RecoveryProvider()), "none");
}

TEST(ThreadEvent, CarriesALargeAndADeepPayload) {
  ThreadStartedEvent started{"t", {}, std::vector<std::string>(100'000, std::string(100, 'x'))};
  EXPECT_EQ(decode<ThreadEvent>(JSONValue::decode(encode(ThreadEvent(started)).encode())), ThreadEvent(started));
  constexpr std::size_t levels = 500;
  const std::string nested = std::string(levels, '[') + std::string(levels, ']');
  const auto deep = decoded<ThreadEvent>(
      R"({"type":"turn.moderationMetadata","thread_id":"t","turn_id":"u","metadata":)" + nested + "}");
  EXPECT_EQ(std::get<TurnModerationMetadataEvent>(deep.value).metadata.encode(), nested);
  EXPECT_EQ(decode<ThreadEvent>(encode(deep)), deep);
}

TEST(ThreadEvent, NamesThePathToWhatIsWrong) {
  try {
    (void)decoded<ThreadEvent>(R"({"type":"hook.started","thread_id":"t","run":{"id":3}})");
    ADD_FAILURE() << "decoded";
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.context().codingPath, (std::vector<std::string>{"run", "id"}));
  }
}

TEST(ThreadEvent, StreamsInOneReadableLine) {
  std::ostringstream stream;
  stream << ThreadEvent(UnknownThreadEvent{"future.event"});
  EXPECT_EQ(stream.str(), R"(ThreadEvent {"type":"future.event"})");
}

TEST(UnknownThreadEvent, FollowsItsTable) { tests::checkRecord<UnknownThreadEvent>(R"({"type":"future.event"})"); }

}  // namespace
