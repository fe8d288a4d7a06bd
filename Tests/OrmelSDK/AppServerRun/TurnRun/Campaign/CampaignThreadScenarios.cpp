#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignThreadScenarios.h"

#include <array>
#include <chrono>
#include <string_view>

#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignErrors.h"
#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignRequests.h"
#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignThread.h"
#include "OrmelSDK/Concurrency/Sleep.h"

namespace ormel::testing {

namespace {

using Reply = ServerPlan::Reply;
using Fault = ServerPlan::Fault;

/// The refusal by which operations that need a conversation meet a new thread begins so.
constexpr std::string_view notStarted = "Start the ";

constexpr std::array interruptReplies = {Reply::give, Reply::give, Reply::refuse, Reply::withhold,
                                         Reply::giveAtTimeout};

std::optional<std::string> anyThread(CampaignWorld& world) {
  return world.coin() ? std::optional<std::string>("thread-of-old") : std::nullopt;
}

void dawdleOrNot(CampaignWorld& world) {
  world.plan().tellsOfForeignTurns = world.coin();
  if (world.coin()) world.dawdle();
}

/// Fails unless all calls but those that were cancelled failed with what the plan brings about, or with one of these.
void requireErrorsOfPlan(CampaignWorld& world, const CampaignThread& thread,
                         std::initializer_list<std::string_view> others) {
  auto errors = errorsOf(world.plan());
  errors.insert(errors.end(), others);
  for (const auto& record : thread.calls()) {
    if (!record->wasCancelled) thread.requireErrors(*record, errors);
  }
}

/// One that is not disturbed; it shows that the thread is sound.
void thenAnother(CampaignThread& thread) {
  thread.settle();
  const auto& next = thread.call(thread.id() ? thread.anyKind() : ThreadCallKind::turn);
  thread.settle();
  thread.requirePlainEnd(next);
  thread.close();
}

void turns(CampaignWorld& world) {
  dawdleOrNot(world);
  CampaignThread thread(world, anyThread(world));
  for (int count = 0; count < 3; ++count) {
    const auto& record = thread.call(thread.id() ? thread.anyKind() : static_cast<ThreadCallKind>(world.coin()));
    thread.settle();
    thread.requirePlainEnd(record);
    world.require(world.server.started() == 1 && world.server.running() == 1, "the process is used again");
  }
  thread.close();
}

/// Calls that follow each other as fast as an application can make them: it goes on when it sees an end.
Task<void> oneAfterAnother(CampaignWorld& world, CampaignThread& thread, int count) {
  for (; count > 0; --count) {
    auto& record = thread.call(thread.id() ? thread.anyKind() : ThreadCallKind::turn);
    while (!record.isOver) co_await sleepFor(world.scheduler, std::chrono::nanoseconds(0));
    thread.requirePlainEnd(record);
  }
}

void rapidTurns(CampaignWorld& world) {
  dawdleOrNot(world);
  CampaignThread thread(world, anyThread(world));
  world.launch(oneAfterAnother(world, thread, 3), {});
  thread.settle();
  world.require(world.server.started() == 1, "the process is used again");
  thread.close();
}

void threadAbort(CampaignWorld& world) {
  world.plan().replies["turn/interrupt"] = anyOf(world, interruptReplies);
  world.plan().endsInterruptedTurns = world.coin();
  world.plan().completesTurns = world.coin();
  world.plan().ignoresTermination = world.scheduler.choose(4) == 0;
  dawdleOrNot(world);
  CampaignThread thread(world, "thread-of-old");
  auto& record = thread.call(thread.anyKind());
  bool isInTime = false;
  thread.atAnyStep([&] {
    // Later on the server may be asked for the turn, which is then over.
    isInTime = !record.isOver && world.scheduler.now() < 100'000'000'000;
    record.controller.abort();
  });
  if (world.coin()) thread.atAnyStep([&] { thread.interrupt(); });
  thread.settle();
  thread.requireErrors(record, {aborted, interruptTimedOut, noLongerCurrent, streamFinished});
  const bool mustEnd = isInTime && !world.plan().completesTurns;
  world.require(!mustEnd || record.error.has_value(), "an abort ends the call");
  world.plan().completesTurns = true;
  thenAnother(thread);
}

/// A signal that is aborted late reaches its own operation only.
void lateAbort(CampaignWorld& world) {
  dawdleOrNot(world);
  CampaignThread thread(world, "thread-of-old");
  auto& record = thread.call(thread.anyKind());
  thread.settle();
  thread.requirePlainEnd(record);
  if (world.coin()) {
    thread.callAborted(thread.anyKind());
    thread.settle();
  }
  const auto& next = thread.call(thread.anyKind());
  thread.atAnyStep([&] { record.controller.abort(); });
  thread.settle();
  thread.requirePlainEnd(next);
  thread.close();
}

void race(CampaignWorld& world) {
  dawdleOrNot(world);
  CampaignThread thread(world, anyThread(world));
  for (auto starts = 2 + world.scheduler.choose(3); starts > 0; --starts) {
    thread.atAnyStep([&] { thread.call(thread.anyKind()); });
  }
  if (world.coin()) thread.atAnyStep([&] { thread.interrupt(); });
  thread.settle();
  for (const auto& record : thread.calls()) {
    thread.requireErrors(*record, {alreadyActive, noLongerCurrent, aborted, streamFinished, notStarted});
  }
  thenAnother(thread);
}

/// The end of an idle server comes to light while the next operations begin.
void idleExit(CampaignWorld& world) {
  world.plan().exitsAfterTurn = true;
  dawdleOrNot(world);
  CampaignThread thread(world, "thread-of-old");
  thread.call(thread.anyKind());
  for (auto starts = 2 + world.scheduler.choose(3); starts > 0; --starts) {
    thread.atAnyStep([&] { thread.call(thread.anyKind()); });
  }
  thread.settle();
  requireErrorsOfPlan(world, thread, {alreadyActive, noLongerCurrent});
  thread.close();
}

/// The same in the very moment in which the operations are reserved.
void idleEnd(CampaignWorld& world) {
  constexpr std::uint64_t stepsOfReservation = 12;
  dawdleOrNot(world);
  CampaignThread thread(world, "thread-of-old");
  thread.call(thread.anyKind());
  thread.settle();
  world.atAnyStep([&] { world.server.lastProcess().exit(0); }, stepsOfReservation);
  for (auto starts = 3 + world.scheduler.choose(4); starts > 0; --starts) {
    world.atAnyStep([&] { thread.call(thread.anyKind()); }, 2 * stepsOfReservation);
  }
  world.plan().exitsAfterTurn = true;
  thread.settle();
  requireErrorsOfPlan(world, thread, {alreadyActive, noLongerCurrent});
  thread.close();
}

void ownThreads(CampaignWorld& world) {
  constexpr std::array faults = {Fault::malformedLine, Fault::exitInstead, Fault::endOfFile};
  if (world.coin()) world.plan().fault = anyOf(world, faults);
  world.plan().faultAtLine = 1 + world.scheduler.choose(14);
  dawdleOrNot(world);
  CampaignThread thread(world, "thread-of-old");
  for (int count = 0; count < 2; ++count) {
    auto& record = thread.call(thread.anyKindOfItsOwnThread());
    if (world.coin()) thread.atAnyStep([&] { record.controller.abort(); });
    thread.settle();
    world.require(thread.id() == "thread-of-old", "the id is that of the main conversation");
  }
  requireErrorsOfPlan(world, thread, {aborted, noLongerCurrent});
  thread.close();
}

void joins(CampaignWorld& world) {
  constexpr std::array replies = {Reply::give, Reply::give, Reply::refuse, Reply::withhold, Reply::giveAtTimeout};
  world.plan().replies["turn/steer"] = anyOf(world, replies);
  world.plan().holdsSteersUntilTurnEnds = world.coin();
  dawdleOrNot(world);
  CampaignThread thread(world, "thread-of-old");
  const auto& record = thread.call(thread.anyKind());
  for (auto count = 1 + world.scheduler.choose(4); count > 0; --count) {
    thread.atAnyStep([&] {
      switch (world.scheduler.choose(3)) {
        case 0:
          thread.interrupt();
          break;
        case 1:
          thread.answer();
          break;
        default:
          thread.steer();
      }
    });
  }
  thread.settle();
  thread.requireErrors(record, {aborted, noLongerCurrent, streamFinished, "App-server RPC turn/steer timed out"});
  thenAnother(thread);
}

void threadRelease(CampaignWorld& world) {
  world.plan().completesTurns = world.coin();
  world.plan().ignoresTermination = world.scheduler.choose(4) == 0;
  dawdleOrNot(world);
  CampaignThread thread(world, "thread-of-old");
  auto& record = thread.call(thread.anyKind());
  thread.atAnyStep([&] { thread.drop(); });
  if (world.coin()) thread.atAnyStep([&] { record.controller.abort(); });
  if (world.coin()) thread.atAnyStep([&] { thread.call(thread.anyKind()); });
  thread.settle();
  for (const auto& each : thread.calls()) {
    thread.requireErrors(*each, {aborted, noLongerCurrent, streamFinished, alreadyActive, dropped});
  }
  thread.close();
}

void faults(CampaignWorld& world) {
  constexpr std::array all = {
      Fault::malformedLine,     Fault::exit,      Fault::exitInstead,      Fault::exitWithinTheLine,
      Fault::exitWithPipesHeld, Fault::endOfFile, Fault::endOfFileThenExit};
  world.plan().fault = anyOf(world, all);
  world.plan().faultAtLine = 1 + world.scheduler.choose(14);
  world.plan().explainsFault = world.coin();
  dawdleOrNot(world);
  CampaignThread thread(world, anyThread(world));
  thread.call(thread.id() ? thread.anyKind() : ThreadCallKind::turn);
  thread.settle();
  thread.call(thread.id() ? thread.anyKind() : ThreadCallKind::turn);
  thread.settle();
  requireErrorsOfPlan(world, thread, {noLongerCurrent});
  // A fault happens once.
  world.plan().fault.reset();
  thenAnother(thread);
}

void threadCancelledCaller(CampaignWorld& world) {
  dawdleOrNot(world);
  CampaignThread thread(world, "thread-of-old");
  auto& record = thread.call(thread.anyKind());
  thread.atAnyStep([&] { record.stop.request_stop(); });
  thread.settle();
  if (!record.wasCancelled) thread.requireErrors(record, {aborted, streamFinished});
  thenAnother(thread);
}

void lostReader(CampaignWorld& world) {
  dawdleOrNot(world);
  world.plan().asksForApproval = world.coin();
  CampaignThread thread(world, "thread-of-old");
  auto& record = thread.call(static_cast<ThreadCallKind>(1 + world.scheduler.choose(4)), world.scheduler.choose(4));
  if (world.coin()) thread.atAnyStep([&] { thread.drop(); });
  if (world.coin()) thread.atAnyStep([&] { record.controller.abort(); });
  thread.settle();
  thread.requireErrors(record, {aborted, noLongerCurrent, streamFinished});
  thread.close();
}

/// A turn that lasts longer than its caller has time for.
void threadTimeout(CampaignWorld& world) {
  using namespace std::chrono_literals;
  constexpr std::array<std::chrono::nanoseconds, 5> times = {1s, 3s, 30s, 33s, 120s};
  world.plan().replies["turn/interrupt"] = anyOf(world, interruptReplies);
  world.plan().completesTurns = world.scheduler.choose(3) == 0;
  world.plan().endsInterruptedTurns = world.coin();
  const bool isStartWithheld = world.scheduler.choose(3) == 0;
  if (isStartWithheld) world.plan().replies["thread/resume"] = world.plan().replies["thread/start"] = Reply::withhold;
  dawdleOrNot(world);
  CampaignThread thread(world, anyThread(world));
  thread.callWithin(static_cast<ThreadCallKind>(world.coin()), anyOf(world, times));
  if (world.coin()) {
    world.after(anyOf(world, times), [&] { thread.interrupt(); });
  }
  world.after(anyOf(world, times), [&] { thread.call(thread.anyKind()); });
  if (world.coin()) thread.atAnyStep([&] { thread.awaitIdle(); });
  thread.settle();
  world.plan().completesTurns = true;
  world.plan().replies.clear();
  thenAnother(thread);
}

/// The application waits for one operation to end, and begins the next.
void waitsForIdle(CampaignWorld& world) {
  world.plan().completesTurns = world.coin();
  world.plan().replies["turn/interrupt"] = anyOf(world, interruptReplies);
  dawdleOrNot(world);
  CampaignThread thread(world, "thread-of-old");
  thread.call(thread.anyKind());
  for (auto count = 2 + world.scheduler.choose(4); count > 0; --count) {
    thread.atAnyStep([&] {
      thread.awaitIdle();
      if (world.scheduler.choose(3) == 0) thread.interrupt();
      if (world.scheduler.choose(3) == 0) thread.call(thread.anyKind());
    });
  }
  thread.settle();
  world.plan().completesTurns = true;
  thenAnother(thread);
}

/// The thread is closed, once or more often, while it is busy or about to be.
void threadClosing(CampaignWorld& world) {
  world.plan().completesTurns = world.coin();
  world.plan().ignoresTermination = world.scheduler.choose(3) == 0;
  dawdleOrNot(world);
  CampaignThread thread(world, anyThread(world));
  thread.call(thread.anyKind());
  for (auto count = 1 + world.scheduler.choose(2); count > 0; --count) {
    thread.atAnyStep([&] { thread.closeThread(); });
  }
  for (auto count = 1 + world.scheduler.choose(3); count > 0; --count) {
    thread.atAnyStep([&] { thread.call(thread.anyKind()); });
  }
  if (world.coin()) thread.atAnyStep([&] { thread.awaitIdle(); });
  if (world.coin()) thread.atAnyStep([&] { thread.interrupt(); });
  if (world.coin()) thread.atAnyStep([&] { thread.drop(); });
  thread.settle();
  thread.closeThread();
  thread.settle();
  thread.close();
}

/// The server asks, the handlers answer in all ways, and the application stops, closes or destroys all that it has.
void threadAsked(CampaignWorld& world) {
  RequestPlan plan;
  plan.sharesIDs = world.scheduler.choose(3) == 0;
  plan.resolves = world.scheduler.choose(3) == 0;
  plan.handlersFail = true;
  CampaignRequests requests(world, plan);
  world.plan().completesTurns = world.coin();
  world.plan().endsInterruptedTurns = world.coin();
  dawdleOrNot(world);
  CampaignThread thread(world, "thread-of-old");
  requests.serveUnless([&thread] { return thread.isOutOfUse(); });
  auto& record = thread.call(thread.anyKind());
  const auto end = world.scheduler.choose(5);
  thread.atAnyStep([&, end] {
    if (end == 0) thread.drop();
    if (end == 1) thread.closeThread();
    if (end == 2) thread.interrupt();
    if (end == 3) record.controller.abort();
  });
  if (world.coin()) thread.atAnyStep([&] { thread.call(thread.anyKind()); });
  if (world.coin()) thread.atAnyStep([&] { thread.steer(); });
  thread.settle();
  thread.close();
}

/// Everything at once.
void threadStorm(CampaignWorld& world) {
  auto& plan = world.plan();
  constexpr std::array all = {
      Fault::malformedLine,     Fault::exit,      Fault::exitInstead,       Fault::exitWithinTheLine,
      Fault::exitWithPipesHeld, Fault::endOfFile, Fault::endOfFileThenExit, Fault::inputBreaks};
  if (world.coin()) plan.fault = anyOf(world, all);
  plan.faultAtLine = 1 + world.scheduler.choose(30);
  plan.completesTurns = world.scheduler.choose(3) != 0;
  plan.asksForApproval = world.coin();
  plan.exitsAfterTurn = world.scheduler.choose(4) == 0;
  plan.endsInterruptedTurns = world.coin();
  plan.ignoresTermination = world.scheduler.choose(4) == 0;
  constexpr std::array statuses = {"completed", "failed", "interrupted", "strange"};
  plan.turnStatus = anyOf(world, statuses);
  plan.replies["turn/interrupt"] = anyOf(world, interruptReplies);
  dawdleOrNot(world);
  CampaignThread thread(world, anyThread(world));
  for (auto events = 3 + world.scheduler.choose(5); events > 0; --events) {
    thread.atAnyStep([&] {
      auto& calls = thread.calls();
      switch (world.scheduler.choose(11)) {
        case 0:
          thread.interrupt();
          break;
        case 1:
          thread.steer();
          break;
        case 2:
          calls[world.scheduler.choose(calls.size())]->controller.abort();
          break;
        case 3:
          calls[world.scheduler.choose(calls.size())]->stop.request_stop();
          break;
        case 4:
          if (world.scheduler.choose(8) == 0) thread.drop();
          break;
        case 5:
          thread.call(thread.anyKind(), world.scheduler.choose(4));
          break;
        case 6:
          thread.awaitIdle();
          break;
        default:
          thread.call(thread.anyKind());
      }
    });
  }
  thread.call(ThreadCallKind::turn);
  thread.settle();
  requireErrorsOfPlan(world, thread,
                      {aborted, noLongerCurrent, alreadyActive, alreadyFinished, dropped, notStarted, "Turn failed",
                       "went wrong", "Unknown turn completion status: strange"});
  thread.close();
}

}  // namespace

std::vector<CampaignScenario> campaignThreadScenarios() {
  return {
      {"ThreadTurns", turns},
      {"ThreadRapidTurns", rapidTurns},
      {"ThreadAbort", threadAbort},
      {"ThreadLateAbort", lateAbort},
      {"ThreadRace", race},
      {"ThreadIdleExit", idleExit},
      {"ThreadIdleEnd", idleEnd},
      {"ThreadOwnThreads", ownThreads},
      {"ThreadJoins", joins},
      {"ThreadRelease", threadRelease},
      {"ThreadFaults", faults},
      {"ThreadCancelledCaller", threadCancelledCaller},
      {"ThreadLostReader", lostReader},
      {"ThreadTimeout", threadTimeout},
      {"ThreadIdleWaits", waitsForIdle},
      {"ThreadClosing", threadClosing},
      {"ThreadAsked", threadAsked},
      {"ThreadStorm", threadStorm},
  };
}

}  // namespace ormel::testing
