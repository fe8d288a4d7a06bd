#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "OrmelSDK/Events/HookEvents.h"
#include "OrmelSDK/Records/ThreadGoal.h"
#include "OrmelSDK/Records/ThreadSettings.h"
#include "Support/NotifiedRun.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Events = std::vector<ThreadEvent>;

constexpr const char* goal =
    R"({"threadId":"g","objective":"o","status":"active","tokensUsed":1,"timeUsedSeconds":2,"createdAt":3,"updatedAt":4})";
constexpr const char* newSettings =
    R"({"cwd":"/w","approvalPolicy":"never","approvalsReviewer":"user","sandboxPolicy":{"type":"readOnly"},
        "model":"m","modelProvider":"p","collaborationMode":"plan"})";
constexpr const char* hook =
    R"({"id":"h","eventName":"stop","handlerType":"command","executionMode":"sync","scope":"turn","sourcePath":"/p",
        "source":"user","displayOrder":1,"status":"running","startedAt":5,"entries":[]})";
constexpr const char* guardianReview =
    R"("threadId":"t1","turnId":"u1","reviewId":"r","review":{"status":"denied","risk_level":"extreme"},
       "action":{"type":"teleport"})";

std::string with(std::string_view members) { return "{" + std::string(members) + "}"; }

ThreadGoal decodedGoal() { return decode<ThreadGoal>(JSONValue::decode(goal)); }
ThreadSettings decodedSettings() { return decode<ThreadSettings>(JSONValue::decode(newSettings)); }
HookRunSummary decodedHook() { return decode<HookRunSummary>(JSONValue::decode(hook)); }

/// A notification that makes an event whether it names somebody or not.
struct Notified {
  const char* method;
  std::string members;
};

const std::vector<Notified>& scopedNotifications() {
  static const std::string item = R"("item":{"type":"sleep","id":"s"})";
  static const std::string delta = R"("itemId":"i","delta":"d")";
  static const std::vector<Notified> all = {
      {"item/started", item},
      {"item/updated", item},
      {"item/completed", item},
      {"item/agentMessage/delta", delta},
      {"item/fileChange/patchUpdated", R"("itemId":"i")"},
      {"item/reasoning/summaryTextDelta", delta},
      {"item/reasoning/textDelta", delta},
      {"item/plan/delta", delta},
      {"thread/started", R"("thread":{"id":"t1"})"},
  };
  return all;
}

const std::vector<Notified>& scopedNotificationsWithIDs() {
  static const std::string recovery = R"("provider":"p","message":"m")";
  static const std::vector<Notified> all = {
      {"item/autoApprovalReview/started", R"("reviewId":"r","review":{"status":"denied"},"action":{"type":"x"})"},
      {"item/autoApprovalReview/completed", R"("reviewId":"r","review":{"status":"denied"},"action":{"type":"x"})"},
      {"modelProvider/authRecoveryStarted", recovery},
      {"modelProvider/authRecoveryCompleted", recovery},
      {"autoApprovalReview/strictReviewRequired", R"("startedAtMs":1)"},
      {"turn/plan/updated", R"("plan":[])"},
  };
  return all;
}

const std::vector<Notified>& unscopedNotifications() {
  static const std::vector<Notified> all = {
      {"thread/goal/updated", std::string(R"("goal":)") + goal},
      {"thread/goal/cleared", R"("x":1)"},
      {"thread/settings/updated", std::string(R"("threadSettings":)") + newSettings},
      {"hook/started", std::string(R"("run":)") + hook},
      {"hook/completed", std::string(R"("run":)") + hook},
      {"error", R"("message":"m")"},
      {"warning", R"("message":"m")"},
      {"guardianWarning", R"("message":"m")"},
      {"deprecationNotice", R"("summary":"s")"},
      {"configWarning", R"("summary":"s")"},
      {"model/verification", R"("verifications":[])"},
      {"model/rerouted", R"("fromModel":"a")"},
      {"model/safetyBuffering/updated", R"("model":"m")"},
      {"turn/moderationMetadata", R"("metadata":1)"},
  };
  return all;
}

constexpr const char* foreignIDs[] = {R"("threadId":"t2","turnId":"u1",)", R"("threadId":"t1","turnId":"u2",)",
                                      R"("thread_id":"t2","turn_id":"u2",)"};

TEST(AppServerTurnRunNotificationTable, PassesWhatIsOfTheTurnOrNamesNobody) {
  for (const Notified& notified : scopedNotifications()) {
    for (const char* ids : {"", R"("threadId":"t1","turnId":"u1",)", R"("thread_id":"t1","turn_id":"u1",)"}) {
      EXPECT_EQ(eventsOf({line(notified.method, with(ids + notified.members))}).size(), 1U) << notified.method << ids;
    }
  }
  for (const Notified& notified : scopedNotificationsWithIDs()) {
    const std::string ids = R"("threadId":"t1","turnId":"u1",)";
    EXPECT_EQ(eventsOf({line(notified.method, with(ids + notified.members))}).size(), 1U) << notified.method;
  }
}

TEST(AppServerTurnRunNotificationTable, DropsInSilenceWhatIsOfAnotherThreadOrTurn) {
  std::vector<std::string> lines;
  for (const auto* list : {&scopedNotifications(), &scopedNotificationsWithIDs()}) {
    for (const Notified& notified : *list) {
      for (const char* ids : foreignIDs) lines.push_back(line(notified.method, with(ids + notified.members)));
    }
  }
  EXPECT_THAT(wordsOf(lines), IsEmpty());
}

TEST(AppServerTurnRunNotificationTable, DropsWhatIsForeignBeforeItLooksForWhatItIsAbout) {
  for (const char* method :
       {"item/started", "item/autoApprovalReview/started", "item/autoApprovalReview/completed", "item/updated",
        "item/completed", "item/agentMessage/delta", "item/commandExecution/outputDelta", "item/mcpToolCall/progress",
        "item/fileChange/patchUpdated", "item/reasoning/summaryTextDelta", "item/reasoning/textDelta",
        "item/plan/delta", "turn/plan/updated", "thread/tokenUsage/updated", "modelProvider/authRecoveryStarted",
        "modelProvider/authRecoveryCompleted", "autoApprovalReview/strictReviewRequired"}) {
    EXPECT_THAT(wordsOf({line(method, R"({"threadId":"t2"})")}), IsEmpty()) << method;
  }
}

TEST(AppServerTurnRunNotificationTable, DropsDeltasOfForeignTurnsForTheItemsThatTheTurnHas) {
  const std::string command = R"({"item":{"type":"commandExecution","id":"c","status":"inProgress"}})";
  const std::string call = R"({"item":{"type":"mcpToolCall","id":"m","status":"inProgress"}})";
  EXPECT_THAT(wordsOf({line("item/started", command), line("item/started", call),
                       line("item/commandExecution/outputDelta", R"({"turnId":"u2","itemId":"c","delta":"x"})"),
                       line("item/mcpToolCall/progress", R"({"threadId":"t2","itemId":"m","message":"x"})"),
                       line("item/commandExecution/outputDelta", R"({"turnId":"u1","itemId":"c","delta":"x"})"),
                       line("item/mcpToolCall/progress", R"({"threadId":"t1","itemId":"m","message":"x"})")}),
              ElementsAre("item.started c", "item.started m", "item.updated c", "item.updated m"));
}

TEST(AppServerTurnRunNotificationTable, PassesWhatIsOfNoParticularTurnWhoeverItNames) {
  for (const Notified& notified : unscopedNotifications()) {
    for (const char* ids : foreignIDs) {
      EXPECT_EQ(eventsOf({line(notified.method, with(ids + notified.members))}).size(), 1U) << notified.method << ids;
    }
  }
}

TEST(AppServerTurnRunNotificationTable, ComparesMethodsExactly) {
  EXPECT_THAT(wordsOf({line("Warning", "{}"), line("warning ", "{}"), line("item/agent_message/delta", "{}"),
                       line("item/completed/", R"({"item":{"type":"sleep","id":"s"}})"), line("turn/plan", "{}"),
                       line("thread/goal", "{}"), line("somethingElse/new", "{}")}),
              IsEmpty());
}

TEST(AppServerTurnRunNotificationTable, TakesParamsThatAreNoObjectForEmptyOnes) {
  for (const char* params : {"null", "[]", "7", R"("text")"}) {
    EXPECT_THAT(wordsOf({line("warning", params), line("error", params), line("item/started", params)}),
                ElementsAre("warning Ormel warning", "error Unknown app-server error"));
  }
  EXPECT_THAT(wordsOf({R"({"method":"warning"})"}), ElementsAre("warning Ormel warning"));
}

TEST(AppServerTurnRunNotificationTable, TellsOfTheThread) {
  EXPECT_EQ(eventsOf({line("thread/started", R"({"thread":{"id":"t1","forkedFromId":"t0"}})")}),
            (Events{ThreadStartedEvent{"t1", "t0", {}}}));
}

TEST(AppServerTurnRunNotificationTable, TellsOfGoals) {
  const std::string goalMember = std::string(R"("goal":)") + goal;
  EXPECT_EQ(eventsOf({line("thread/goal/updated",
                           with(R"("threadId":"a","thread_id":"b","turnId":"c","turn_id":"d",)" + goalMember)),
                      line("thread/goal/updated", with(R"("threadId":1,"thread_id":"b","turn_id":"d",)" + goalMember)),
                      line("thread/goal/updated", with(R"("thread_id":"b","turnId":null,)" + goalMember))}),
            (Events{ThreadGoalUpdatedEvent{"a", "c", decodedGoal()}, ThreadGoalUpdatedEvent{"b", "d", decodedGoal()},
                    ThreadGoalUpdatedEvent{"b", std::nullopt, decodedGoal()}}));
  EXPECT_EQ(eventsOf({line("thread/goal/cleared", R"({"threadId":"a","thread_id":"b"})"),
                      line("thread/goal/cleared", R"({"threadId":[],"thread_id":"b"})")}),
            (Events{ThreadGoalClearedEvent{"a"}, ThreadGoalClearedEvent{"b"}}));
}

TEST(AppServerTurnRunNotificationTable, TellsOfSettings) {
  const std::string value(newSettings);
  EXPECT_EQ(
      eventsOf({line("thread/settings/updated",
                     R"({"threadId":"a","thread_id":"b","thread_settings":{},"threadSettings":)" + value + "}"),
                line("thread/settings/updated", R"({"thread_id":"b","thread_settings":)" + value + "}")}),
      (Events{ThreadSettingsUpdatedEvent{"a", decodedSettings()}, ThreadSettingsUpdatedEvent{"b", decodedSettings()}}));
}

TEST(AppServerTurnRunNotificationTable, TellsOfHooks) {
  const std::string run = std::string(R"("run":)") + hook;
  EXPECT_EQ(
      eventsOf({line("hook/started", with(R"("threadId":"a","turnId":"c",)" + run)),
                line("hook/started", with(R"("thread_id":"b","turn_id":"d",)" + run)), line("hook/started", with(run)),
                line("hook/completed", with(R"("threadId":"a","turnId":"c",)" + run)),
                line("hook/completed", with(R"("thread_id":"b","turn_id":"d",)" + run)),
                line("hook/completed", with(R"("threadId":7,"turnId":7,)" + run))}),
      (Events{HookStartedEvent{"a", "c", decodedHook()}, HookStartedEvent{"b", "d", decodedHook()},
              HookStartedEvent{"t1", std::nullopt, decodedHook()}, HookCompletedEvent{"a", "c", decodedHook()},
              HookCompletedEvent{"b", "d", decodedHook()}, HookCompletedEvent{"t1", std::nullopt, decodedHook()}}));
}

TEST(AppServerTurnRunNotificationTable, TellsOfReviews) {
  const GuardianApprovalReview parsed{GuardianApprovalReviewStatus::denied, {}, {}, {}, {}};
  const GuardianApprovalReviewAction action = GuardianUnknownReviewAction{"teleport"};
  EXPECT_EQ(eventsOf({line("item/autoApprovalReview/started", with(guardianReview)),
                      line("item/autoApprovalReview/completed", with(guardianReview))}),
            (Events{GuardianApprovalReviewStartedEvent{"t1", "u1", {}, "r", parsed, action},
                    GuardianApprovalReviewCompletedEvent{
                        "t1", "u1", {}, "r", AutoReviewDecisionSource::agent, parsed, action}}));
}

TEST(AppServerTurnRunNotificationTable, FailsTheOperationOnAReviewThatCannotBeRead) {
  const std::pair<const char*, const char*> cases[] = {
      {R"({})", "guardian approval review payload missing threadId"},
      {R"({"threadId":"t1"})", "guardian approval review payload missing turnId"},
      {R"({"threadId":"t1","turnId":"u1"})", "guardian approval review payload missing reviewId"},
      {R"({"threadId":"t1","turnId":"u1","reviewId":"r"})", "guardian approval review payload missing review"},
      {R"({"threadId":"t1","turnId":"u1","reviewId":"r","review":{"status":"x"}})",
       "guardian approval review payload missing action"},
      {R"({"threadId":"t1","turnId":"u1","reviewId":"r","review":{},"action":{"type":"x"}})",
       "guardian approval review missing status"},
      {R"({"threadId":"t1","turnId":"u1","reviewId":"r","review":{"status":"x"},"action":{}})",
       "guardian approval review action missing type"},
  };
  for (const char* method : {"item/autoApprovalReview/started", "item/autoApprovalReview/completed"}) {
    for (const auto& [params, message] : cases) {
      EXPECT_THAT(wordsUpToTheEndOf({line(method, params)}), ElementsAre(std::string("stream error: ") + message));
    }
  }
}

TEST(AppServerTurnRunNotificationTable, TellsOfErrorsAndWarnings) {
  EXPECT_THAT(wordsOf({line("error", R"({"error":{"message":7},"message":"b"})"),
                       line("error", R"({"error":"a","message":"b"})"), line("error", R"({"message":7})")}),
              ElementsAre("error b", "error b", "error Unknown app-server error"));
  EXPECT_EQ(eventsOf({line("warning", R"({"threadId":"a","thread_id":"b","message":"m"})"),
                      line("warning", R"({"thread_id":"b","message":7})"), line("warning", "{}")}),
            (Events{ThreadWarningEvent{"a", "m"}, ThreadWarningEvent{"b", "Ormel warning"},
                    ThreadWarningEvent{std::nullopt, "Ormel warning"}}));
  EXPECT_EQ(eventsOf({line("guardianWarning", R"({"threadId":"a","thread_id":"b","message":"m"})"),
                      line("guardianWarning", R"({"thread_id":"b","message":7})")}),
            (Events{GuardianWarningEvent{"a", "m"}, GuardianWarningEvent{"b", "Guardian warning"}}));
}

TEST(AppServerTurnRunNotificationTable, TellsOfAuthRecoveryAndStrictReview) {
  const std::string recovery = R"({"threadId":"t1","turnId":"u1","provider":"p","message":"m"})";
  const AuthRecoveryEvent event{"t1", "u1", "p", "m"};
  EXPECT_EQ(
      eventsOf({line("modelProvider/authRecoveryStarted", recovery),
                line("modelProvider/authRecoveryCompleted", recovery),
                line("autoApprovalReview/strictReviewRequired", R"({"threadId":"t1","turnId":"u1","startedAtMs":9})")}),
      (Events{AuthRecoveryStartedEvent{event}, AuthRecoveryCompletedEvent{event},
              StrictReviewRequiredEvent{"t1", "u1", 9}}));
}

TEST(AppServerTurnRunNotificationTable, TellsOfDeprecationAndConfiguration) {
  EXPECT_EQ(eventsOf({line("deprecationNotice", R"({"summary":"s","details":"d"})"),
                      line("configWarning", R"({"summary":"s","path":"/c"})")}),
            (Events{DeprecationNoticeEvent{"s", "d"}, ConfigWarningEvent{"s", {}, "/c", {}}}));
}

TEST(AppServerTurnRunNotificationTable, TellsOfModels) {
  EXPECT_EQ(eventsOf({line("model/verification", R"({"threadId":"a","turnId":"c","verifications":["v",7,null,"w"]})"),
                      line("model/verification", R"({"thread_id":"b","turn_id":"d","verifications":"v"})"),
                      line("model/verification", "{}")}),
            (Events{ModelVerificationEvent{"a", "c", {"v", "w"}}, ModelVerificationEvent{"b", "d", {}},
                    ModelVerificationEvent{"t1", "u1", {}}}));
  EXPECT_EQ(
      eventsOf({line("model/rerouted", R"({"thread_id":"b","turnId":"c","fromModel":"x","toModel":"y","reason":"z"})"),
                line("model/rerouted", R"({"fromModel":1,"toModel":null})")}),
      (Events{ModelReroutedEvent{"b", "c", "x", "y", "z"}, ModelReroutedEvent{"t1", "u1", "", "", ""}}));
  EXPECT_EQ(eventsOf({line("model/safetyBuffering/updated",
                           R"({"threadId":"a","turnId":"c","model":"m","useCases":["u",1],"use_cases":["x"],
                         "reasons":["r",{}],"showBufferingUi":true,"show_buffering_ui":false,
                         "fasterModel":"f","faster_model":"x"})"),
                      line("model/safetyBuffering/updated",
                           R"({"use_cases":["x"],"show_buffering_ui":true,"faster_model":"f"})"),
                      line("model/safetyBuffering/updated", R"({"showBufferingUi":"yes"})")}),
            (Events{ModelSafetyBufferingUpdatedEvent{"a", "c", "m", {"u"}, {"r"}, true, "f"},
                    ModelSafetyBufferingUpdatedEvent{"t1", "u1", "", {"x"}, {}, true, "f"},
                    ModelSafetyBufferingUpdatedEvent{"t1", "u1", "", {}, {}, false, {}}}));
}

TEST(AppServerTurnRunNotificationTable, TellsOfModeration) {
  EXPECT_EQ(eventsOf({line("turn/moderationMetadata", R"({"threadId":"a","turn_id":"d","metadata":{"x":[1]}})")}),
            (Events{TurnModerationMetadataEvent{"a", "d", JSONValue::decode(R"({"x":[1]})")}}));
}

/// The events of a run that has a process but knows of no turn, and, after a first turn, only of its thread.
Events eventsWithoutATurn(bool isFirst, const std::vector<std::string>& lines) {
  SimulatedScheduler scheduler(1);
  SimulatedRun engine(scheduler);
  if (!isFirst) {
    engine.startTurn();
    engine.completeTurn();
  }
  engine.keep(isFirst ? "thread/start" : "thread/resume");
  const auto starting = engine.start(engine.turn(isFirst ? std::nullopt : std::optional<std::string>("t9")));
  for (const std::string& text : lines) engine.write(text + "\n");
  engine.answerKept(R"({"thread":{"id":"t9"}})");
  auto events = SimulatedRun::taken(starting).events;
  engine.release();
  Events all;
  for (const ThreadEvent& event : events) all.push_back(event);
  all.pop_back();
  return all;
}

TEST(AppServerTurnRunNotificationTable, FallsBackOnTheIDsThatAreKnown) {
  const std::vector<std::string> lines = {line("guardianWarning", "{}"), line("model/rerouted", "{}"),
                                          line("hook/started", std::string(R"({"run":)") + hook + "}")};
  EXPECT_EQ(eventsWithoutATurn(true, lines),
            (Events{GuardianWarningEvent{"", "Guardian warning"}, ModelReroutedEvent{"", "", "", "", ""},
                    HookStartedEvent{"", std::nullopt, decodedHook()}}));
  // The thread outlives the operation, its turn does not.
  EXPECT_EQ(eventsWithoutATurn(false, lines),
            (Events{GuardianWarningEvent{"t1", "Guardian warning"}, ModelReroutedEvent{"t1", "", "", "", ""},
                    HookStartedEvent{"t1", std::nullopt, decodedHook()}}));
}

TEST(AppServerTurnRunNotificationTable, IgnoresAllOfThemBetweenOperations) {
  SimulatedScheduler scheduler(1);
  SimulatedRun engine(scheduler);
  const auto heard = engine.startTurn();
  engine.completeTurn();
  for (const auto* list : {&scopedNotifications(), &scopedNotificationsWithIDs(), &unscopedNotifications()}) {
    for (const Notified& notified : *list) {
      engine.write(line(notified.method, with(R"("threadId":"t1","turnId":"u1",)" + notified.members)) + "\n");
      engine.write(line(notified.method, "{}") + "\n");
    }
  }
  EXPECT_TRUE(engine.run->transport().hasProcess());
  EXPECT_EQ(engine.state(), "finished");
  EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
  const auto next = engine.startTurn();
  engine.completeTurn();
  EXPECT_THAT(*next, ElementsAre("thread.started t1", "turn.completed", "end"));
}

}  // namespace
