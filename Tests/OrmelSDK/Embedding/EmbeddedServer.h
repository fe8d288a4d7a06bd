#pragma once

#include <string>

#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Ormel.h"
#include "Support/SimulatorScenario.h"
#include "Support/TurnRunHarness.h"

namespace ormel::testing {

/// A server that has begun a turn, to which a test adds what it does in it.
inline const std::string embeddedTurn = politeServer + R"(
client asks turn/start
server answers {"turn": {"id": "u1"}}
)";
inline constexpr const char* embeddedTurnEnds =
    R"(server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}
)";
inline constexpr const char* asksForApproval =
    R"(server asks item/commandExecution/requestApproval {"threadId": "t1", "turnId": "u1", "command": "ls"})";

/// A turn in which an approval is asked for, and refused.
inline const std::string embeddedTurnWithApproval =
    embeddedTurn + asksForApproval + " expecting {\"decision\": \"decline\"}\n" + embeddedTurnEnds;

inline OrmelOptions optionsFor(const SimulatorScenario& scenario) {
  OrmelOptions options;
  options.ormelPathOverride = SimulatorScenario::executable();
  options.env = scenario.wholeEnvironment();
  return options;
}

/// An approval handler that takes any function of no arguments, and declines.
template <typename Function>
ThreadOptions whenAskedForApproval(Function function) {
  ThreadOptions options;
  options.commandApprovalHandler = [function](const CommandApprovalRequest&) {
    function();
    return OrmelApprovalDecision::decline;
  };
  return options;
}

/// Blocks until the one-shot is complete.
template <typename T>
T awaited(const OneShot<T>& oneShot) {
  const auto waiting = [](const OneShot<T>& from) -> Task<T> { co_return co_await from.wait(); };
  return waiting(oneShot).get();
}

}  // namespace ormel::testing
