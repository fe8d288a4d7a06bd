#include "OrmelSDK/AppServerRun/TurnRun/CoordinatorScope.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "OrmelSDK/Base/ThreadRunError.h"
#include "Support/PayloadChecks.h"

namespace {

using namespace ormel;
using detail::CoordinatorScope;
using detail::idsIn;
using tests::json;

CoordinatorScope scopeOf(std::optional<std::string> threadID, std::optional<std::string> turnID) {
  CoordinatorScope scope;
  if (threadID) scope.setCoordinatorThread(*threadID);
  if (turnID) scope.setCoordinatorTurn(*turnID);
  return scope;
}

struct BelongingCase {
  std::optional<std::string> threadID;
  std::optional<std::string> turnID;
  const char* params;
  bool belongs;
};

TEST(CoordinatorScope, TakesAbsenceForNoMismatch) {
  const BelongingCase cases[] = {
      {{}, {}, R"({"threadId":"x","turnId":"y"})", true},
      {"t", {}, "{}", true},
      {"t", {}, R"({"threadId":"t"})", true},
      {"t", {}, R"({"threadId":"t","turnId":"any"})", true},
      {"t", {}, R"({"threadId":"x"})", false},
      {"t", {}, R"({"thread_id":"x"})", false},
      {"t", {}, R"({"threadId":"t","thread_id":"x"})", true},
      {"t", {}, R"({"threadId":"x","thread_id":"t"})", false},
      {"t", {}, R"({"threadId":7,"thread_id":"x"})", false},
      {"t", {}, R"({"threadId":7,"thread_id":"t"})", true},
      {"t", {}, R"({"threadId":null})", true},
      {"t", "u", "{}", true},
      {"t", "u", R"({"turnId":"u"})", true},
      {"t", "u", R"({"turn_id":"u"})", true},
      {"t", "u", R"({"turnId":"x"})", false},
      {"t", "u", R"({"turn_id":"x"})", false},
      {"t", "u", R"({"turnId":"u","turn_id":"x"})", true},
      {"t", "u", R"({"turnId":[],"turn_id":"x"})", false},
      {"t", "u", R"({"threadId":"x","turnId":"u"})", false},
      {{}, "u", R"({"threadId":"x","turnId":"u"})", true},
      {{}, "u", R"({"threadId":"x","turnId":"x"})", false},
  };
  for (const BelongingCase& test : cases) {
    const JSONValue params = json(test.params);
    EXPECT_EQ(scopeOf(test.threadID, test.turnID).notificationBelongs(idsIn(*params.objectValue())), test.belongs)
        << test.threadID.value_or("-") << " " << test.turnID.value_or("-") << " " << test.params;
  }
}

TEST(CoordinatorScope, PutsTheIDsOfTheParamsAheadOfEmbeddedOnes) {
  const CoordinatorScope scope = scopeOf("t", "u");
  const JSONValue none = json("{}");
  EXPECT_TRUE(scope.notificationBelongs(idsIn(*none.objectValue()), "t", "u"));
  EXPECT_FALSE(scope.notificationBelongs(idsIn(*none.objectValue()), "x"));
  EXPECT_FALSE(scope.notificationBelongs(idsIn(*none.objectValue()), std::nullopt, "x"));
  const JSONValue named = json(R"({"threadId":"t","turnId":"u"})");
  EXPECT_TRUE(scope.notificationBelongs(idsIn(*named.objectValue()), "x", "x"));
  const JSONValue other = json(R"({"threadId":"x","turnId":"x"})");
  EXPECT_FALSE(scope.notificationBelongs(idsIn(*other.objectValue()), "t", "u"));
}

TEST(CoordinatorScope, IsStricterOnTheTurnOfACompletion) {
  struct Case {
    std::optional<std::string> threadID;
    std::optional<std::string> turnID;
    const char* params;
    bool belongs;
  };
  const Case cases[] = {
      {"t", {}, "{}", false},
      {"t", "x", "{}", false},
      {"t", "u", "{}", true},
      {"t", "u", R"({"threadId":"t"})", true},
      {"t", "u", R"({"thread_id":"x"})", false},
      {{}, "u", R"({"threadId":"x"})", true},
  };
  for (const Case& test : cases) {
    const JSONValue params = json(test.params);
    EXPECT_EQ(scopeOf(test.threadID, test.turnID).turnCompletionBelongs(idsIn(*params.objectValue()), "u"),
              test.belongs)
        << test.params;
  }
}

TEST(CoordinatorScope, LetsATurnBeDefinedOnlyByWhatNamesItsThread) {
  const JSONValue named = json(R"({"threadId":"t"})");
  const JSONValue nameless = json("{}");
  EXPECT_TRUE(scopeOf("t", {}).namesCoordinatorThread(idsIn(*named.objectValue())));
  EXPECT_FALSE(scopeOf("t", {}).namesCoordinatorThread(idsIn(*nameless.objectValue())));
  EXPECT_FALSE(scopeOf("x", {}).namesCoordinatorThread(idsIn(*named.objectValue())));
  EXPECT_FALSE(scopeOf({}, {}).namesCoordinatorThread(idsIn(*named.objectValue())));
}

TEST(CoordinatorScope, TakesWhatItFollowsForActiveToo) {
  CoordinatorScope scope = scopeOf("t", {});
  scope.acceptCoordinatorTurnIdentityFromNotification();
  EXPECT_TRUE(scope.acceptsCoordinatorTurnIdentityFromNotification());
  scope.setCoordinatorTurn("u");
  EXPECT_FALSE(scope.acceptsCoordinatorTurnIdentityFromNotification());
  EXPECT_EQ(scope.active().activeThreadID, "t");
  EXPECT_EQ(scope.active().activeTurnID, "u");
  EXPECT_TRUE(scope.isCoordinator("t", "u"));
  EXPECT_FALSE(scope.isCoordinator("t", "x"));
  EXPECT_FALSE(scope.isCoordinator("x", "u"));
}

TEST(CoordinatorScope, KeepsTheActiveThreadAcrossATransition) {
  CoordinatorScope scope = scopeOf("t", "u");
  scope.deferTurnStarted({1, json("{}"), "u"});
  scope.acceptCoordinatorTurnIdentityFromNotification();
  scope.prepareForCoordinatorThreadTransition();
  EXPECT_EQ(scope.active().activeThreadID, "t");
  EXPECT_FALSE(scope.active().activeTurnID);
  EXPECT_FALSE(scope.coordinatorThreadID());
  EXPECT_FALSE(scope.coordinatorTurnID());
  EXPECT_FALSE(scope.acceptsCoordinatorTurnIdentityFromNotification());
  scope.setCoordinatorTurn("u");
  EXPECT_FALSE(scope.takeDeferredTurnStarted(1));
}

TEST(CoordinatorScope, KeepsWhatIsActiveWhenTheIdentityIsReset) {
  CoordinatorScope scope = scopeOf("t", "u");
  scope.acceptCoordinatorTurnIdentityFromNotification();
  scope.deferTurnCompletion({1, json("{}"), "u"});
  scope.resetCoordinatorIdentity();
  EXPECT_EQ(scope.active().activeThreadID, "t");
  EXPECT_EQ(scope.active().activeTurnID, "u");
  EXPECT_FALSE(scope.coordinatorThreadID());
  EXPECT_FALSE(scope.coordinatorTurnID());
  EXPECT_FALSE(scope.acceptsCoordinatorTurnIdentityFromNotification());
  scope.setCoordinatorTurn("u");
  EXPECT_FALSE(scope.takeDeferredTurnCompletion(1));
}

TEST(CoordinatorScope, RefusesTheSeventeenthThatWaits) {
  CoordinatorScope scope;
  for (int count = 0; count < 16; ++count) {
    scope.deferTurnStarted({1, json("{}"), "u"});
    scope.deferTurnCompletion({1, json("{}"), "u"});
  }
  const auto message = [](auto&& action) {
    try {
      action();
    } catch (const ThreadRunError& error) {
      return std::string(error.what());
    }
    return std::string();
  };
  EXPECT_EQ(message([&] { scope.deferTurnStarted({1, json("{}"), "u"}); }),
            "Too many turn/started notifications before coordinator identity");
  EXPECT_EQ(message([&] { scope.deferTurnCompletion({1, json("{}"), "u"}); }),
            "Too many turn/completed notifications before coordinator identity");
}

struct DeferralCase {
  std::optional<std::string> threadID;
  const char* params;
  bool startMatches;
  bool completionMatches;
};

TEST(CoordinatorScope, IsStricterOnTheThreadOfAStartThanOfACompletion) {
  const DeferralCase cases[] = {
      {"t", "{}", true, true}, {"t", R"({"threadId":"t"})", true, true}, {"t", R"({"threadId":"x"})", false, false},
      {{}, "{}", true, true},  {{}, R"({"threadId":"x"})", false, true},
  };
  for (const DeferralCase& test : cases) {
    CoordinatorScope scope = scopeOf(test.threadID, "u");
    scope.deferTurnStarted({1, json(test.params), "u"});
    scope.deferTurnCompletion({1, json(test.params), "u"});
    EXPECT_EQ(scope.takeDeferredTurnStarted(1).has_value(), test.startMatches) << test.params;
    EXPECT_EQ(scope.takeDeferredTurnCompletion(1).has_value(), test.completionMatches) << test.params;
  }
}

TEST(CoordinatorScope, GivesTheFirstMatchOnceAndForgetsTheRest) {
  CoordinatorScope scope = scopeOf("t", "u");
  scope.deferTurnStarted({1, json(R"({"n":0})"), "u"});
  scope.deferTurnStarted({2, json(R"({"n":1})"), "x"});
  scope.deferTurnStarted({2, json(R"({"n":2})"), "u"});
  scope.deferTurnStarted({2, json(R"({"n":3})"), "u"});
  EXPECT_EQ(scope.takeDeferredTurnStarted(2), json(R"({"n":2})"));
  EXPECT_FALSE(scope.takeDeferredTurnStarted(2));
}

TEST(CoordinatorScope, ForgetsAllWhenNoOperationRunsOrNoTurnIsKnown) {
  CoordinatorScope scope = scopeOf("t", "u");
  scope.deferTurnCompletion({1, json("{}"), "u"});
  EXPECT_FALSE(scope.takeDeferredTurnCompletion(std::nullopt));
  EXPECT_FALSE(scope.takeDeferredTurnCompletion(1));
  CoordinatorScope turnless = scopeOf("t", {});
  turnless.deferTurnCompletion({1, json("{}"), "u"});
  EXPECT_FALSE(turnless.takeDeferredTurnCompletion(1));
  turnless.setCoordinatorTurn("u");
  EXPECT_FALSE(turnless.takeDeferredTurnCompletion(1));
}

}  // namespace
