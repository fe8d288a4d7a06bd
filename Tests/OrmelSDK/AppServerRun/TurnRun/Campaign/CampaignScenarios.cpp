#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignScenarios.h"

#include <array>
#include <chrono>
#include <string_view>

#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignErrors.h"
#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignRaceScenarios.h"
#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignServerRequestScenarios.h"
#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignThreadScenarios.h"
#include "OrmelSDK/Base/OrmelProcessError.h"
#include "OrmelSDK/Concurrency/Sleep.h"
#include "OrmelSDK/Options/OrmelExecutableTrust.h"

namespace ormel::testing {

namespace {

using Reply = ServerPlan::Reply;
using Fault = ServerPlan::Fault;
using ProbeReply = ServerPlan::ProbeReply;

constexpr std::array<const char*, 8> requestMethods = {
    "initialize", "thread/start",         "thread/resume", "thread/fork",
    "turn/start", "thread/compact/start", "review/start",  "turn/interrupt",
};

/// An operation that nothing disturbs; only a compaction can learn of its end before its start has returned.
void requirePlainEnd(const CampaignWorld& world, const OperationRecord& record) {
  if (record.kind == OperationKind::compaction) world.requireErrors(record, {streamFinished});
  world.require(record.kind == OperationKind::compaction || record.endedPlainly(), "nothing keeps a turn from its end");
}

}  // namespace

void addTraffic(CampaignWorld& world) {
  world.plan().tellsOfForeignTurns = world.coin();
  world.plan().isTalkative = world.coin();
  world.plan().repeatsResponses = world.coin();
  constexpr std::array statuses = {"completed", "completed", "completed", "failed", "interrupted", "strange", ""};
  world.plan().turnStatus = anyOf(world, statuses);
  if (world.coin()) world.dawdle();
  if (world.scheduler.choose(6) == 0) {
    world.configuration.ormelOptions.executableTrustAssessment = [](const std::string&) {
      return OrmelExecutableTrustAssessment::trusted();
    };
  }
}

namespace {

void plain(CampaignWorld& world, OperationKind kind) {
  addTraffic(world);
  world.open();
  const auto& record = world.start(kind);
  world.settle();
  requirePlainEnd(world, record);
  world.require(world.server.running() == 1, "the process outlives a plain end");
  world.close();
}

void secondOperations(CampaignWorld& world) {
  addTraffic(world);
  world.open();
  for (int operation = 0; operation < 3; ++operation) {
    const auto& record = world.start(world.anyKind());
    world.settle();
    requirePlainEnd(world, record);
    world.require(world.server.started() == 1 && world.server.running() == 1, "the process is used again");
  }
  world.close();
}

void steering(CampaignWorld& world) {
  constexpr std::array replies = {Reply::give, Reply::give, Reply::refuse, Reply::withhold, Reply::giveAtTimeout};
  world.plan().replies["turn/steer"] = anyOf(world, replies);
  world.plan().holdsSteersUntilTurnEnds = world.coin();
  world.plan().completesTurns = world.scheduler.choose(4) != 0;
  addTraffic(world);
  world.open();
  const auto& record = world.start(world.anyKind());
  for (auto steers = 1 + world.scheduler.choose(3); steers > 0; --steers) world.atAnyStep([&] { world.steer(); });
  world.settle();
  if (world.coin()) {
    const auto& next = world.start(world.anyKind());
    world.settle();
    world.requireErrors(next, {timedOut, streamFinished});
  }
  world.requireErrors(record, {timedOut, streamFinished});
  world.close();
}

void abort(CampaignWorld& world) {
  constexpr std::array replies = {Reply::give, Reply::give, Reply::refuse, Reply::withhold, Reply::giveAtTimeout};
  world.plan().replies["turn/interrupt"] = anyOf(world, replies);
  world.plan().endsInterruptedTurns = world.coin();
  world.plan().completesTurns = world.coin();
  world.plan().ignoresTermination = world.scheduler.choose(4) == 0;
  addTraffic(world);
  world.open();
  const auto& record = world.start(world.anyKind());
  for (auto aborts = 1 + world.scheduler.choose(2); aborts > 0; --aborts) world.atAnyStep([&] { world.interrupt(); });
  world.settle();
  world.requireErrors(record, {aborted, interruptTimedOut, noLongerCurrent, streamFinished});
  // An aborted conversation can go on, with another process.
  const auto& next = world.start(world.anyKind());
  world.settle();
  world.requireErrors(next, {streamFinished});
  world.close();
}

void silence(CampaignWorld& world) {
  world.plan().replies[anyOf(world, requestMethods)] = world.coin() ? Reply::withhold : Reply::giveAtTimeout;
  addTraffic(world);
  world.open();
  const auto& record = world.start(world.anyKind());
  world.settle();
  world.requireErrors(record, {timedOut, streamFinished});
  world.close();
}

void refusals(CampaignWorld& world) {
  world.plan().replies[anyOf(world, requestMethods)] = Reply::refuse;
  addTraffic(world);
  world.open();
  const auto& record = world.start(world.anyKind());
  world.settle();
  world.requireErrors(record, {refused, streamFinished});
  world.close();
}

void liveness(CampaignWorld& world) {
  constexpr std::array kinds = {ProbeReply::inProgress,  ProbeReply::inProgress,  ProbeReply::inProgress,
                                ProbeReply::completed,   ProbeReply::failed,      ProbeReply::interrupted,
                                ProbeReply::turnMissing, ProbeReply::otherThread, ProbeReply::garbage};
  for (auto probes = world.scheduler.choose(4); probes > 0; --probes) {
    world.plan().probeReplies.push_back(anyOf(world, kinds));
  }
  constexpr std::array replies = {Reply::give,   Reply::give,     Reply::give,
                                  Reply::refuse, Reply::withhold, Reply::giveAtTimeout};
  world.plan().replies["thread/read"] = anyOf(world, replies);
  world.plan().completesTurns = false;
  addTraffic(world);
  world.open();
  const auto& record = world.start(world.anyKind());
  if (world.coin()) world.atAnyStep([&] { world.interrupt(); });
  world.settle();
  world.requireErrors(record, {streamFinished, "Unable to reconcile coordinator turn: refused",
                               "Unable to decode coordinator turn reconciliation: ",
                               "Coordinator thread mismatch during liveness reconciliation",
                               "Coordinator turn missing during liveness reconciliation",
                               "App-server RPC thread/read timed out", aborted, noLongerCurrent});
  world.close();
}

void disturbed(CampaignWorld& world, Fault fault) {
  world.plan().fault = fault;
  world.plan().faultAtLine = 1 + world.scheduler.choose(14);
  world.plan().explainsFault = world.coin();
  world.plan().ignoresTermination = world.scheduler.choose(8) == 0;
  addTraffic(world);
  world.open();
}

void thenAnother(CampaignWorld& world, std::initializer_list<std::string_view> errors) {
  const auto& record = world.start(world.anyKind());
  world.settle();
  world.requireErrors(record, errors);
  const auto& next = world.start(world.anyKind());
  world.settle();
  world.requireErrors(next, errors);
  world.close();
}

void exit(CampaignWorld& world) {
  constexpr std::array faults = {Fault::exit, Fault::exitInstead, Fault::exitWithinTheLine, Fault::exitWithPipesHeld};
  disturbed(world, anyOf(world, faults));
  // A line that was cut off cannot be read.
  thenAnother(world, {exited, endOfFile, explained, noLongerCurrent, streamFinished, unreadable});
}

void endOfOutput(CampaignWorld& world) {
  disturbed(world, world.coin() ? Fault::endOfFile : Fault::endOfFileThenExit);
  thenAnother(world, {exited, endOfFile, explained, noLongerCurrent, streamFinished});
}

void malformedLine(CampaignWorld& world) {
  disturbed(world, world.scheduler.choose(3) == 0 ? Fault::faultyNotification : Fault::malformedLine);
  thenAnother(world, {unreadable, "Unexpected ", "Invalid app-server JSON-RPC ", "bare", "Unknown app-server error",
                      "turn/started missing ", "turn/completed missing ", "serverRequest/resolved missing ",
                      "thread/goal/cleared missing ", noLongerCurrent, streamFinished});
}

void brokenInput(CampaignWorld& world) {
  disturbed(world, Fault::inputBreaks);
  thenAnother(world, {timedOut, streamFinished});
}

/// All that a server said before it exited counts, however the end of it comes to light.
void exitAfterTurn(CampaignWorld& world) {
  world.plan().exitsAfterTurn = true;
  addTraffic(world);
  // A client that takes its time may miss what was said of its turn.
  world.hurry();
  world.open();
  const auto& record = world.start(world.anyKind());
  world.settle();
  requirePlainEnd(world, record);
  world.require(world.server.held() == 0, "a process that exited is let go of");
  world.close();
}

void release(CampaignWorld& world) {
  world.plan().completesTurns = world.coin();
  world.plan().ignoresTermination = world.scheduler.choose(4) == 0;
  addTraffic(world);
  world.open();
  const auto& record = world.start(world.anyKind());
  world.atAnyStep([&] {
    world.release();
    world.drop();
  });
  if (world.coin()) world.atAnyStep([&] { world.interrupt(); });
  world.settle();
  world.requireErrors(record, {streamFinished, alreadyFinished, noLongerCurrent, aborted});
  world.close();
}

void lostOwner(CampaignWorld& world) {
  world.plan().completesTurns = world.coin();
  world.plan().asksForApproval = world.coin();
  addTraffic(world);
  world.open();
  const auto& record = world.start(world.anyKind());
  if (world.coin()) world.atAnyStep([&] { world.steer(); });
  world.atAnyStep([&] { world.drop(); });
  world.settle();
  if (!record.wasAbandoned) world.requireErrors(record, {streamFinished});
  world.close();
}

void cancelledCaller(CampaignWorld& world) {
  addTraffic(world);
  world.open();
  auto& record = world.start(world.anyKind());
  world.atAnyStep([&] { record.stop.request_stop(); });
  world.settle();
  if (!record.wasCancelled) world.requireErrors(record, {aborted, streamFinished});
  const auto& next = world.start(world.anyKind());
  world.settle();
  world.requireErrors(next, {alreadyActive, streamFinished});
  world.close();
}

void overlap(CampaignWorld& world) {
  addTraffic(world);
  world.open();
  for (auto starts = 2 + world.scheduler.choose(3); starts > 0; --starts) {
    world.atAnyStep([&] {
      if (world.coin()) {
        world.start(world.anyKind(), world.coin() ? std::optional(world.pastGeneration()) : std::nullopt);
      } else {
        world.reserveAndStart(world.anyKind());
      }
    });
  }
  if (world.coin()) world.atAnyStep([&] { world.interrupt(); });
  world.settle();
  for (const auto& record : world.operations()) {
    world.requireErrors(*record, {alreadyActive, noLongerCurrent, aborted, streamFinished});
  }
  world.close();
}

void launching(CampaignWorld& world) {
  const bool isTrusted = world.coin();
  if (world.coin()) {
    if (!isTrusted) world.beUntrusted();
    world.configuration.ormelOptions.executableTrustAssessment = [isTrusted](const std::string&) {
      return isTrusted ? OrmelExecutableTrustAssessment::trusted()
                       : OrmelExecutableTrustAssessment::rejected("not trusted");
    };
  }
  world.server.failLaunches(world.scheduler.choose(2));
  if (world.coin()) world.dawdle();
  world.open();
  for (auto starts = 1 + world.scheduler.choose(2); starts > 0; --starts) {
    const auto& record = world.start(world.anyKind());
    world.atAnyStep([&] { world.interrupt(); });
    world.settle();
    const std::string untrusted = OrmelProcessError::trustFailureRecoveryMessage();
    world.requireErrors(record, {"/usr/bin/env: ", untrusted, aborted, noLongerCurrent, streamFinished});
  }
  world.close();
}

/// A handler that takes its time, and may fail.
AsyncHandler<OrmelApprovalDecision(CommandApprovalRequest)> slowHandler(CampaignWorld& world) {
  return [&world](CommandApprovalRequest) -> Task<OrmelApprovalDecision> {
    const auto fate = world.scheduler.choose(4);
    if (fate == 0) throw CancelledError();
    for (auto waits = world.scheduler.choose(20); waits > 0; --waits) {
      co_await sleepFor(world.scheduler, std::chrono::nanoseconds(fate == 1 ? 1 : 0));
    }
    co_return OrmelApprovalDecision::accept;
  };
}

void approvals(CampaignWorld& world) {
  world.plan().asksForApproval = true;
  world.configuration.threadOptions.commandApprovalHandler = slowHandler(world);
  addTraffic(world);
  world.open();
  if (world.coin()) world.atAnyStep([&] { world.interrupt(); });
  for (int operation = 0; operation < 2; ++operation) {
    const auto& record = world.start(world.anyKind());
    world.settle();
    world.requireErrors(record, {aborted, streamFinished, noLongerCurrent});
  }
  world.close();
}

/// Everything at once.
void storm(CampaignWorld& world) {
  auto& plan = world.plan();
  constexpr std::array faults = {
      Fault::malformedLine,     Fault::exit,      Fault::exitInstead,       Fault::exitWithinTheLine,
      Fault::exitWithPipesHeld, Fault::endOfFile, Fault::endOfFileThenExit, Fault::inputBreaks};
  if (world.coin()) plan.fault = anyOf(world, faults);
  plan.faultAtLine = 1 + world.scheduler.choose(20);
  plan.explainsFault = world.coin();
  plan.completesTurns = world.scheduler.choose(3) != 0;
  plan.asksForApproval = world.coin();
  plan.exitsAfterTurn = world.scheduler.choose(4) == 0;
  plan.endsInterruptedTurns = world.coin();
  plan.holdsSteersUntilTurnEnds = world.coin();
  plan.ignoresTermination = world.scheduler.choose(4) == 0;
  if (world.coin()) {
    constexpr std::array replies = {Reply::refuse, Reply::withhold, Reply::giveAtTimeout};
    plan.replies[anyOf(world, requestMethods)] = anyOf(world, replies);
  }
  world.configuration.threadOptions.commandApprovalHandler = slowHandler(world);
  world.configuration.threadOptions.skillExtraRoots = std::vector<std::string>{"/roots"};
  addTraffic(world);
  world.open();
  for (auto events = 2 + world.scheduler.choose(5); events > 0; --events) {
    world.atAnyStep([&world] {
      switch (world.scheduler.choose(8)) {
        case 0:
          world.interrupt();
          break;
        case 1:
          world.steer();
          break;
        case 2:
          if (!world.operations().empty()) world.operations().back()->stop.request_stop();
          break;
        case 3:
          if (world.scheduler.choose(8) == 0) {
            world.release();
            world.drop();
          }
          break;
        default:
          world.start(world.anyKind());
      }
    });
  }
  world.start(world.anyKind());
  world.settle();
  auto errors = errorsOf(plan);
  errors.insert(errors.end(), {aborted, noLongerCurrent, alreadyActive, alreadyFinished, dropped});
  for (const auto& record : world.operations()) {
    if (!record->wasCancelled) world.requireErrors(*record, errors);
  }
  world.close();
}

}  // namespace

const std::vector<CampaignScenario>& campaignScenarios() {
  static const std::vector<CampaignScenario> scenarios = [] {
    std::vector<CampaignScenario> all = {
        {"Turn", [](CampaignWorld& world) { plain(world, OperationKind::turn); }},
        {"ResumedTurn", [](CampaignWorld& world) { plain(world, OperationKind::resumedTurn); }},
        {"Review", [](CampaignWorld& world) { plain(world, OperationKind::review); }},
        {"Compaction", [](CampaignWorld& world) { plain(world, OperationKind::compaction); }},
        {"Fork", [](CampaignWorld& world) { plain(world, OperationKind::fork); }},
        {"SecondOperations", secondOperations},
        {"Steering", steering},
        {"Abort", abort},
        {"Silence", silence},
        {"Refusals", refusals},
        {"Liveness", liveness},
        {"Exit", exit},
        {"ExitAfterTurn", exitAfterTurn},
        {"EndOfOutput", endOfOutput},
        {"MalformedLine", malformedLine},
        {"BrokenInput", brokenInput},
        {"Release", release},
        {"LostOwner", lostOwner},
        {"CancelledCaller", cancelledCaller},
        {"Overlap", overlap},
        {"Launching", launching},
        {"Approvals", approvals},
        {"Storm", storm},
    };
    const auto& ofRequests = serverRequestScenarios();
    all.insert(all.end(), ofRequests.begin(), ofRequests.end());
    for (auto& scenario : raceScenarios()) all.push_back(std::move(scenario));
    for (auto& scenario : campaignThreadScenarios()) all.push_back(std::move(scenario));
    return all;
  }();
  return scenarios;
}

}  // namespace ormel::testing
