#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignRaceScenarios.h"

#include <array>
#include <chrono>
#include <functional>
#include <string>
#include <utility>

namespace ormel::testing {

namespace {

using namespace std::chrono_literals;

using Reply = ServerPlan::Reply;
using Fault = ServerPlan::Fault;
using ProbeReply = ServerPlan::ProbeReply;

/// As many steps as a line takes from the server to the run.
constexpr std::uint64_t stepsOfALine = 14;

/// Clients that begin operations, several times within a few steps.
void beginNow(CampaignWorld& world) {
  for (auto count = 2 + world.scheduler.choose(5); count > 0; --count) {
    world.atAnyStep(
        [&world] {
          if (world.coin()) {
            world.start(world.anyKind());
          } else {
            world.reserveAndStart(world.anyKind());
          }
        },
        stepsOfALine);
  }
}

void beginAfter(CampaignWorld& world, std::chrono::nanoseconds delay) {
  world.after(delay, [&world] { beginNow(world); });
}

/// Calls it when the server reads the first request of the method.
void onFirst(CampaignWorld& world, std::string method, std::function<void()> action) {
  world.behaviour.onRequest = [method = std::move(method), action = std::move(action),
                               isOver = false](const std::string& read) mutable {
    if (read != method || std::exchange(isOver, true)) return;
    action();
  };
}

void playOn(CampaignWorld& world) {
  world.start(world.anyKind());
  world.settle();
  world.start(world.anyKind());
  world.settle();
  world.close();
}

/// A turn ends while the run asks for it, and the next operations begin before the answer comes.
void probeAndEnd(CampaignWorld& world) {
  constexpr std::array replies = {Reply::give, Reply::give, Reply::refuse, Reply::withhold};
  constexpr std::array kinds = {ProbeReply::inProgress, ProbeReply::completed, ProbeReply::turnMissing,
                                ProbeReply::otherThread, ProbeReply::garbage};
  addTraffic(world);
  world.plan().completesTurns = false;
  world.plan().endsTurnWhenProbed = true;
  world.plan().replies["thread/read"] = anyOf(world, replies);
  world.plan().probeReplies.push_back(anyOf(world, kinds));
  onFirst(world, "thread/read", [&world] { beginNow(world); });
  world.open();
  playOn(world);
}

/// The turn is interrupted, steered, or both, while the run asks for it.
void probeAndJoin(CampaignWorld& world) {
  addTraffic(world);
  world.plan().completesTurns = false;
  world.plan().endsInterruptedTurns = world.coin();
  world.plan().probeReplies = {ProbeReply::inProgress, ProbeReply::interrupted};
  onFirst(world, "thread/read", [&world] {
    world.atAnyStep([&world] { world.interrupt(); }, stepsOfALine);
    world.atAnyStep([&world] { world.steer(); }, stepsOfALine);
    if (world.coin()) beginNow(world);
  });
  world.open();
  playOn(world);
}

/// The process ends with an interrupt or a steer in flight, before or after its response.
void joinAndExit(CampaignWorld& world) {
  constexpr std::array faults = {Fault::exit,      Fault::exitInstead,       Fault::exitWithinTheLine,
                                 Fault::endOfFile, Fault::endOfFileThenExit, Fault::exitWithPipesHeld};
  const bool isSteered = world.coin();
  addTraffic(world);
  world.plan().completesTurns = world.scheduler.choose(3) == 0;
  world.plan().fault = anyOf(world, faults);
  world.plan().faultAtResponseTo = isSteered ? "turn/steer" : "turn/interrupt";
  world.plan().explainsFault = world.coin();
  world.behaviour.onFault = [&world] {
    beginNow(world);
    beginAfter(world, 100ms);
  };
  world.open();
  for (auto joins = 1 + world.scheduler.choose(4); joins > 0; --joins) {
    world.atAnyStep([&world, isSteered] {
      if (isSteered != (world.scheduler.choose(4) == 0)) {
        world.steer();
      } else {
        world.interrupt();
      }
    });
  }
  playOn(world);
}

/// The report of an exit, the end of the output and the next operations come in one moment.
void exitAndNext(CampaignWorld& world) {
  constexpr std::array faults = {Fault::exitWithPipesHeld, Fault::exitWithPipesHeld, Fault::endOfFileThenExit,
                                 Fault::exit};
  addTraffic(world);
  world.plan().fault = anyOf(world, faults);
  world.plan().faultAtLine = 1 + world.scheduler.choose(12);
  world.plan().explainsFault = world.coin();
  world.plan().ignoresTermination = world.coin();
  world.behaviour.onFault = [&world] {
    if (world.coin()) beginNow(world);
    beginAfter(world, 100ms);
    if (world.coin()) world.after(100ms, [&world] { world.interrupt(); });
  };
  world.open();
  playOn(world);
}

/// A process is given up, and the next one is in use, while the last words of the first are read.
void lastWords(CampaignWorld& world) {
  constexpr std::array methods = {"initialize", "initialize", "thread/start", "thread/resume"};
  addTraffic(world);
  world.plan().fault = world.coin() ? Fault::endOfFile : Fault::exit;
  world.plan().faultAtResponseTo = anyOf(world, methods);
  world.plan().explainsFault = true;
  world.behaviour.onFault = [&world] {
    world.atAnyStep([&world] { world.interrupt(); }, stepsOfALine);
    beginNow(world);
  };
  world.open();
  playOn(world);
}

/// The exit of a process is told when the next one has ended too, with its pipes held.
void lateExit(CampaignWorld& world) {
  constexpr std::array methods = {"initialize", "thread/start", "thread/resume"};
  addTraffic(world);
  world.plan().fault = Fault::exit;
  world.plan().faultAtResponseTo = anyOf(world, methods);
  world.behaviour.onFault = [&world, methods, isFirst = true]() mutable {
    if (!std::exchange(isFirst, false)) return;
    world.server.lastProcess().slowTermination(world.coin() ? 50ms : 100ms);
    world.scheduler.post([&world, methods] {
      world.plan().fault = Fault::exitWithPipesHeld;
      world.plan().faultAtResponseTo = anyOf(world, methods);
    });
    beginNow(world);
  };
  world.open();
  playOn(world);
}

/// Clients act in the moment in which the grace of an interrupt, or the time of a request, is over.
void graceAndNext(CampaignWorld& world) {
  constexpr std::array replies = {Reply::give, Reply::give, Reply::withhold, Reply::giveAtTimeout};
  const Reply reply = anyOf(world, replies);
  addTraffic(world);
  world.plan().replies["turn/interrupt"] = reply;
  world.plan().endsInterruptedTurns = world.coin();
  world.plan().completesTurns = false;
  onFirst(world, "turn/interrupt", [&world, reply] {
    beginAfter(world, reply == Reply::give ? std::chrono::nanoseconds(3s) : std::chrono::nanoseconds(30s));
    if (world.coin()) beginNow(world);
  });
  world.open();
  for (auto interrupts = 1 + world.scheduler.choose(2); interrupts > 0; --interrupts) {
    world.atAnyStep([&world] { world.interrupt(); });
  }
  playOn(world);
}

/// A steer that outlives its turn meets the next operation.
void steerAndNext(CampaignWorld& world) {
  constexpr std::array replies = {Reply::give, Reply::withhold, Reply::giveAtTimeout};
  addTraffic(world);
  world.plan().replies["turn/steer"] = anyOf(world, replies);
  world.plan().holdsSteersUntilTurnEnds = world.coin();
  world.plan().turnsToComplete = 1;
  onFirst(world, "turn/steer", [&world] { beginNow(world); });
  world.open();
  for (auto steers = 1 + world.scheduler.choose(3); steers > 0; --steers) {
    world.atAnyStep([&world] { world.steer(); });
  }
  for (auto starts = 2 + world.scheduler.choose(4); starts > 0; --starts) {
    world.atAnyStep([&world] { world.start(world.anyKind()); }, 2 * CampaignWorld::stepsOfInterest);
  }
  if (world.scheduler.choose(4) == 0) {
    world.atAnyStep([&world] { world.interrupt(); }, 2 * CampaignWorld::stepsOfInterest);
  }
  playOn(world);
}

/// More starts of turns than a run keeps come before it knows its own.
void manyTurns(CampaignWorld& world) {
  addTraffic(world);
  world.plan().foreignStartsAhead = 14 + world.scheduler.choose(5);
  world.open();
  playOn(world);
}

/// Operations follow each other so closely that the server still talks of the last one.
void closeFollowers(CampaignWorld& world) {
  addTraffic(world);
  world.plan().isTalkative = true;
  world.open();
  for (auto starts = 4 + world.scheduler.choose(8); starts > 0; --starts) {
    world.atAnyStep(
        [&world] {
          if (world.coin()) {
            world.start(world.anyKind());
          } else {
            world.reserveAndStart(world.anyKind());
          }
        },
        3 * CampaignWorld::stepsOfInterest);
  }
  playOn(world);
}

}  // namespace

std::vector<CampaignScenario> raceScenarios() {
  return {
      {"ProbeAndEnd", probeAndEnd},       {"ProbeAndJoin", probeAndJoin}, {"JoinAndExit", joinAndExit},
      {"ExitAndNext", exitAndNext},       {"GraceAndNext", graceAndNext}, {"SteerAndNext", steerAndNext},
      {"LastWords", lastWords},           {"LateExit", lateExit},         {"ManyTurns", manyTurns},
      {"CloseFollowers", closeFollowers},
  };
}

}  // namespace ormel::testing
