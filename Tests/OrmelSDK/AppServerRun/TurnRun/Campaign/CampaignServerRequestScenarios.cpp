#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignServerRequestScenarios.h"

#include <array>
#include <initializer_list>
#include <string_view>

#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignErrors.h"
#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignRequests.h"

namespace ormel::testing {

namespace {

using Fault = ServerPlan::Fault;

constexpr std::string_view handlerFailed = "Failed handling app-server request: ";

/// Any action comes while the first requests are under way, or later.
void atAnyTime(CampaignWorld& world, const std::function<void()>& action) {
  if (world.coin()) {
    world.atAnyStep(action);
  } else {
    world.atAnyStep([&world, action] { world.atAnyStep(action); });
  }
}

void submitAtAnyTime(CampaignWorld& world, CampaignRequests& requests) {
  for (auto submissions = 1 + world.scheduler.choose(4); submissions > 0; --submissions) {
    atAnyTime(world, [&requests] { requests.submit(); });
  }
}

void playTurns(CampaignWorld& world, int turns, std::initializer_list<std::string_view> errors) {
  for (int turn = 0; turn < turns; ++turn) {
    const auto& record = world.start(world.anyKind());
    world.settle();
    world.requireErrors(record, errors);
  }
}

/// Answers that are early, late or never there, while the turns go their way.
void answering(CampaignWorld& world) {
  RequestPlan plan;
  plan.asksWhatIsUnknown = true;
  plan.handlersFail = world.coin();
  CampaignRequests requests(world, plan);
  world.plan().tellsOfForeignTurns = world.coin();
  if (world.coin()) world.dawdle();
  world.open();
  playTurns(world, 2, {streamFinished});
  world.close();
}

/// The application interrupts while it is asked.
void interrupted(CampaignWorld& world) {
  RequestPlan plan;
  plan.asksTheUser = world.coin();
  CampaignRequests requests(world, plan);
  world.plan().completesTurns = world.coin();
  world.plan().endsInterruptedTurns = world.coin();
  world.plan().ignoresTermination = world.scheduler.choose(8) == 0;
  if (world.coin()) world.dawdle();
  world.open();
  atAnyTime(world, [&world] { world.interrupt(); });
  if (world.coin()) atAnyTime(world, [&world] { world.interrupt(); });
  if (plan.asksTheUser) submitAtAnyTime(world, requests);
  playTurns(world, 2, {aborted, noLongerCurrent, streamFinished});
  world.close();
  requests.checkSubmissions();
}

/// The server asks again under an id that it has not got an answer to.
void sharedIDs(CampaignWorld& world) {
  RequestPlan plan;
  plan.asks = 6;
  plan.sharesIDs = true;
  plan.resolves = world.coin();
  plan.asksWhatIsUnknown = world.coin();
  CampaignRequests requests(world, plan);
  if (world.coin()) world.dawdle();
  world.open();
  if (world.coin()) atAnyTime(world, [&world] { world.interrupt(); });
  playTurns(world, 2, {aborted, noLongerCurrent, streamFinished});
  world.close();
}

/// The server moves on without an answer.
void resolved(CampaignWorld& world) {
  RequestPlan plan;
  plan.resolves = true;
  plan.asksTheUser = world.coin();
  CampaignRequests requests(world, plan);
  if (world.coin()) world.dawdle();
  world.open();
  if (plan.asksTheUser) submitAtAnyTime(world, requests);
  playTurns(world, 2, {streamFinished});
  world.close();
  requests.checkSubmissions();
}

/// The user answers while the turn ends, in one way or another.
void userInput(CampaignWorld& world) {
  RequestPlan plan;
  plan.asks = 6;
  plan.asksTheUser = true;
  CampaignRequests requests(world, plan);
  world.plan().completesTurns = world.scheduler.choose(4) != 0;
  world.plan().exitsAfterTurn = world.scheduler.choose(4) == 0;
  if (world.coin()) world.dawdle();
  world.open();
  submitAtAnyTime(world, requests);
  submitAtAnyTime(world, requests);
  if (world.coin()) atAnyTime(world, [&world] { world.interrupt(); });
  playTurns(world, 2, {aborted, noLongerCurrent, streamFinished, exited, endOfFile});
  world.close();
  requests.checkSubmissions();
}

/// The server breaks while it asks; another process serves the next turn.
void dying(CampaignWorld& world) {
  constexpr std::array faults = {
      Fault::malformedLine,     Fault::exit,      Fault::exitInstead,       Fault::exitWithinTheLine,
      Fault::exitWithPipesHeld, Fault::endOfFile, Fault::endOfFileThenExit, Fault::inputBreaks};
  RequestPlan plan;
  plan.asksTheUser = world.coin();
  plan.asksWhatIsUnknown = world.coin();
  plan.sharesIDs = world.coin();
  CampaignRequests requests(world, plan);
  world.plan().fault = faults[world.scheduler.choose(faults.size())];
  world.plan().faultAtLine = 3 + world.scheduler.choose(20);
  world.plan().explainsFault = world.coin();
  world.plan().ignoresTermination = world.scheduler.choose(8) == 0;
  if (world.coin()) world.dawdle();
  world.open();
  if (plan.asksTheUser) submitAtAnyTime(world, requests);
  playTurns(world, 3,
            {exited, endOfFile, explained, unreadable, timedOut, noLongerCurrent, streamFinished, "Unexpected ",
             "Invalid app-server JSON-RPC ", "bare", "Unknown app-server error"});
  world.close();
  requests.checkSubmissions();
}

/// The owner goes away while it is asked, with or without a word.
void lost(CampaignWorld& world) {
  RequestPlan plan;
  plan.asksTheUser = world.coin();
  CampaignRequests requests(world, plan);
  world.plan().completesTurns = world.coin();
  if (world.coin()) world.dawdle();
  world.open();
  const bool isReleased = world.coin();
  atAnyTime(world, [&world, isReleased] {
    if (isReleased) world.release();
    world.drop();
  });
  if (plan.asksTheUser) submitAtAnyTime(world, requests);
  const auto& record = world.start(world.anyKind());
  world.settle();
  if (isReleased) world.requireErrors(record, {streamFinished, alreadyFinished, noLongerCurrent});
  world.close();
  requests.checkSubmissions();
}

/// Tokens are not to be had, which ends the turn and the process.
void tokens(CampaignWorld& world) {
  RequestPlan plan;
  plan.asksForTokens = true;
  world.allowFailure(handlerFailed);
  plan.asks = 8;
  plan.handlersFail = true;
  plan.sharesIDs = world.coin();
  CampaignRequests requests(world, plan);
  if (world.coin()) world.dawdle();
  world.open();
  if (world.coin()) atAnyTime(world, [&world] { world.interrupt(); });
  playTurns(world, 3, {aborted, handlerFailed, noLongerCurrent, streamFinished});
  world.close();
}

/// Everything at once.
void requestStorm(CampaignWorld& world) {
  RequestPlan plan;
  plan.asks = 8;
  plan.sharesIDs = world.coin();
  plan.resolves = world.coin();
  plan.asksTheUser = true;
  plan.asksForTokens = world.coin();
  if (plan.asksForTokens) world.allowFailure(handlerFailed);
  plan.asksWhatIsUnknown = true;
  plan.handlersFail = world.coin();
  CampaignRequests requests(world, plan);
  constexpr std::array faults = {Fault::malformedLine, Fault::exit, Fault::exitWithPipesHeld, Fault::endOfFile};
  if (world.coin()) world.plan().fault = faults[world.scheduler.choose(faults.size())];
  world.plan().faultAtLine = 5 + world.scheduler.choose(30);
  world.plan().completesTurns = world.scheduler.choose(3) != 0;
  world.plan().endsInterruptedTurns = world.coin();
  world.plan().exitsAfterTurn = world.scheduler.choose(4) == 0;
  if (world.coin()) world.dawdle();
  world.open();
  for (auto events = 4 + world.scheduler.choose(8); events > 0; --events) {
    atAnyTime(world, [&world, &requests] {
      switch (world.scheduler.choose(8)) {
        case 0:
          world.interrupt();
          break;
        case 1:
          world.steer();
          break;
        case 2:
          world.start(world.anyKind());
          break;
        case 3:
          if (world.scheduler.choose(8) == 0) {
            world.release();
            world.drop();
          }
          break;
        default:
          requests.submit();
      }
    });
  }
  world.start(world.anyKind());
  world.settle();
  world.start(world.anyKind());
  world.settle();
  world.close();
  requests.checkSubmissions();
}

}  // namespace

const std::vector<CampaignScenario>& serverRequestScenarios() {
  static const std::vector<CampaignScenario> scenarios = {
      {"RequestsAnswered", answering}, {"RequestsInterrupted", interrupted}, {"RequestsSharingIDs", sharedIDs},
      {"RequestsResolved", resolved},  {"RequestsOfTheUser", userInput},     {"RequestsOfADyingServer", dying},
      {"RequestsLost", lost},          {"RequestsForTokens", tokens},        {"RequestStorm", requestStorm},
  };
  return scenarios;
}

}  // namespace ormel::testing
