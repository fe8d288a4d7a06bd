#pragma once

namespace ormel::detail {

class CoordinatorScope;
class CoordinatorTurn;
class RunItems;
class RunProblems;
class RunServerRequests;
class RunStream;

/// The parts of a run that notifications of the server act on.
struct NotificationContext {
  RunStream& stream;
  CoordinatorScope& scope;
  CoordinatorTurn& turn;
  RunItems& items;
  RunServerRequests& serverRequests;
  const RunProblems& problems;
};

}  // namespace ormel::detail
