#pragma once

#include <cstdint>
#include <optional>

#include "OrmelSDK/AppServerRun/TurnRun/StreamCompletion.h"

namespace ormel::detail {

class CoordinatorScope;
class RunItems;
class RunRecovery;
class RunRequests;
class RunServerRequests;
class RunStream;
class RunTransport;

/// The parts of a run, each of which resets itself when it is told what has begun or ended.
struct RunParts {
  RunTransport& transport;
  RunRequests& requests;
  RunStream& stream;
  CoordinatorScope& scope;
  RunRecovery& recovery;
  RunItems& items;
  RunServerRequests& serverRequests;
};

/// Begins and ends the operations of a run, and its process. The first end of an operation wins.
///
/// It only tells the parts, in an order that each can rely on: recovery is cancelled before the operation is over, the
/// channel ends before waiting requests are released, and the process goes last.
///
/// *Thread safety*: none; it belongs to the run's strand.
class RunLifecycle {
 public:
  explicit RunLifecycle(const RunParts& parts) : parts_(parts) {}

  /// Makes a new operation the current one. Fails with `ThreadRunError` of the kind `streamError` if one is running.
  std::uint64_t reserve();

  /// The generation of a prepared operation if it is still current; without one, that of a new operation.
  std::uint64_t admit(std::optional<std::uint64_t> preparedOperationGeneration);

  /// Ends the operation, once. A failed end ends the process too.
  void finishStreamState(const StreamCompletion& with, std::optional<std::uint64_t> finishedOperationGeneration);
  /// Ends the operation that is running, if there is one.
  void finishCurrent(const StreamCompletion& with);
  /// Ends the operation only if it is still the current one.
  void finishIfCurrent(std::uint64_t operationGeneration, const StreamCompletion& with);

  /// Ends the process, and forgets everything that belongs to it.
  void shutdownProcess();

 private:
  void prepareForNextTurn();

  const RunParts parts_;
};

}  // namespace ormel::detail
