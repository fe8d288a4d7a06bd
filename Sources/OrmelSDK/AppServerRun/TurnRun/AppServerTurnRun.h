#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "OrmelSDK/AppServerRun/Connection/ServerServices.h"
#include "OrmelSDK/AppServerRun/TurnRun/AppServerMessage.h"
#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun+ServerRequests.h"
#include "OrmelSDK/AppServerRun/TurnRun/CoordinatorScope.h"
#include "OrmelSDK/AppServerRun/TurnRun/CoordinatorTurn.h"
#include "OrmelSDK/AppServerRun/TurnRun/NotificationContext.h"
#include "OrmelSDK/AppServerRun/TurnRun/OperationRequest.h"
#include "OrmelSDK/AppServerRun/TurnRun/RequestSender.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunClosing.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunConfiguration.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunItems.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunLife.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunLifecycle.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunProblems.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunRecovery.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunRequests.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunServerRequests.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunStream.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunTransport.h"
#include "OrmelSDK/Concurrency/EventChannel.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Events/ThreadEvent.h"

namespace ormel::detail {

/// An operation that the server has accepted, and the thread that it began on.
struct StartedOperation {
  StartedOperation(EventChannel<ThreadEvent> eventsOfOperation, std::string idOfThread)
      : events(std::move(eventsOfOperation)), threadID(std::move(idOfThread)) {}

  EventChannel<ThreadEvent> events;
  std::string threadID;
};

/// The engine behind a conversation. It owns one server process at a time and runs operations on it (turns, reviews,
/// compactions, side conversations), one at a time. The process outlives an operation that ends normally, and is reused
/// by the next one.
///
/// Every wait lets other work in. So all that is late carries the generation it was started under, of the transport or
/// of the operation, and does nothing when that has passed. An operation ends only by `finishStreamState`, and the
/// first end wins. `docs/turn-run.md` has the parts and the tables of their states.
///
/// *Thread safety*: the operations that return a `Task` may be called from any thread; they run on the run's strand.
/// All else belongs to the strand.
///
/// *Object lifetimes*: held by shared pointers. Its timers and its reader hold it weakly; operations under way hold it.
/// A run that goes while a process is there ends the process.
///
/// *Errors*: `ThreadRunError` of the kind `streamError`, `OrmelProcessError`, `CancelledError`, and whatever an
/// application's hook throws.
///
/// *Cancellation*: a `start` whose task is cancelled fails its operation as aborted.
class AppServerTurnRun final : public std::enable_shared_from_this<AppServerTurnRun> {
 public:
  static std::shared_ptr<AppServerTurnRun> create(AppServerTurnRunConfiguration configuration,
                                                  ServerServices services = ServerServices());

  AppServerTurnRun(const AppServerTurnRun&) = delete;
  AppServerTurnRun& operator=(const AppServerTurnRun&) = delete;

  const Strand& strand() const noexcept { return life_.strand(); }

  /// Makes a new operation the current one, ahead of a `start` that is given its generation. Fails if one is running,
  /// which is untouched.
  Task<std::uint64_t> reserveOperation();

  /// Starts an operation; ends when the server has accepted it. Without a prepared generation it reserves the operation
  /// itself. A failure ends the operation and the process, save for a failure of the reservation.
  Task<StartedOperation> start(OperationRequest request,
                               std::optional<std::uint64_t> preparedOperationGeneration = std::nullopt);

  /// Adds input to the running turn.
  Task<void> steer(Input input, TurnOptions turnOptions,
                   std::optional<std::uint64_t> expectedOperationGeneration = std::nullopt);

  /// Answers the questions of the item `itemID`: for each question's id, the answers.
  Task<void> submitUserInput(std::string itemID, std::map<std::string, std::vector<std::string>> answers,
                             std::optional<std::uint64_t> expectedOperationGeneration = std::nullopt);

  /// See `RunRecovery::interruptFromSignal`.
  Task<void> interruptFromSignal(std::optional<std::uint64_t> expectedOperationGeneration = std::nullopt);

  /// Ends whatever is under way, normally, and then the process: for an owner that goes away.
  Task<void> release();

  /// Ends whatever is under way as aborted, and the process, and admits no operation from then on. Completes when the
  /// process is gone; one that has not ended by itself after three seconds is killed.
  Task<void> close();

  /// Interrupts the operation as `interruptFromSignal` if it is still under way, after setting `isDue`.
  Task<void> interruptWhenDue(std::uint64_t operationGeneration, std::shared_ptr<std::atomic<bool>> isDue);

  /// Awaited for each piece of output before it is split into lines. A seam for tests; set before the first operation.
  std::function<Task<void>(std::string)> stdoutChunkProcessingHook;

  /// Awaited with the method and the operation's generation when the response to "turn/start" of a turn, or to
  /// "turn/steer", has come and the operation may have moved on. A seam for tests; set before the first operation.
  std::function<Task<void>(std::string, std::uint64_t)> postRequestAwaitHook;

  // For tests and for what watches the run; on the strand only.
  const RunStream& stream() const noexcept { return stream_; }
  const RunRequests& requests() const noexcept { return requests_; }
  const RunTransport& transport() const noexcept { return transport_; }
  const CoordinatorScope& scope() const noexcept { return scope_; }
  const RunServerRequests& serverRequests() const noexcept { return serverRequests_; }
  const RunItems& items() const noexcept { return items_; }
  std::uint64_t protocolActivityGeneration() const noexcept { return recovery_.protocolActivityGeneration(); }

 private:
  using Self = std::shared_ptr<AppServerTurnRun>;

  AppServerTurnRun(AppServerTurnRunConfiguration configuration, ServerServices services);

  static Task<std::uint64_t> reserveOn(Self self);
  static Task<void> releaseOn(Self self);
  static Task<void> closeOn(Self self);
  static Task<void> endProcess(Self self);
  static Task<void> interruptWhenDueOn(Self self, std::uint64_t operationGeneration,
                                       std::shared_ptr<std::atomic<bool>> isDue);

  // Process and output.
  Task<void> startProcess(std::uint64_t operationGeneration);
  void launchProcess();
  void launchProcess(std::uint64_t generation, const LaunchSettings& settings);
  TerminationHandler terminationHandler(std::uint64_t transportGeneration);
  void coordinateProcessExit(std::uint64_t transportGeneration, const Termination& termination);
  static Task<void> readStdout(std::weak_ptr<AppServerTurnRun> owner, ServerOutput output,
                               std::uint64_t transportGeneration,
                               std::shared_ptr<AppServerProcessExitCoordinator> exitCoordinator);
  void handleReadFailure(std::uint64_t transportGeneration, const std::exception_ptr& failure);
  /// Holds the run only while it works on a chunk: the run may be gone at any time.
  static Task<void> readStdoutLoop(std::weak_ptr<AppServerTurnRun> owner, ServerOutput output,
                                   std::uint64_t transportGeneration,
                                   std::shared_ptr<AppServerProcessExitCoordinator> exitCoordinator);
  /// Handles the lines that are there up to one that ends a request, and returns whether there was one: its waiter is
  /// to run before the next line, which may depend on what it makes of the response.
  bool handleLines(ServerOutput& output);
  /// `jsonPadding` readable bytes stand behind the line. Returns whether it ended a request.
  bool handleIncomingLine(std::string_view paddedLine) noexcept;
  /// Ends the operation for a line that could not be taken; `garbage` is the line if it is no message at all.
  void failByLine(const std::exception_ptr& error, std::optional<std::string_view> garbage) noexcept;
  bool handleMessage(const AppServerMessage& message);
  /// Whether the standard error of the process would tell why the operation ended.
  FailureCauses causes() const;
  FailureCauses::Cause causeOfEnd(const std::optional<Termination>& termination) const;
  bool isErrorTextAwaited() const noexcept { return stream_.isPending() && !recovery_.abortedByClient(); }
  void handleEOF(std::uint64_t transportGeneration);
  void handleProcessExit(std::uint64_t transportGeneration, const Termination& termination);

  // Operations.
  static Task<StartedOperation> startOn(Self self, OperationRequest request, std::optional<std::uint64_t> prepared);
  Task<EventChannel<ThreadEvent>> openOperation(std::uint64_t operationGeneration);
  Task<void> initializeIfNeeded(std::uint64_t operationGeneration);
  void applySkillExtraRootsIfNeeded();
  /// Each carries out the steps of one kind of operation, and gives the id of the thread that it began on.
  Task<std::string> carryOut(std::uint64_t operationGeneration, const OperationRequest& request);
  Task<std::string> startTurn(std::uint64_t operationGeneration, const OperationRequest::Turn& request);
  Task<std::string> startReview(std::uint64_t operationGeneration, const OperationRequest::Review& request);
  Task<std::string> startCompaction(std::uint64_t operationGeneration, const OperationRequest::Compaction& request);
  Task<std::string> startEphemeralForkTurn(std::uint64_t operationGeneration,
                                           const OperationRequest::EphemeralForkTurn& request);
  Task<std::string> resumeThread(std::uint64_t operationGeneration, const std::string& threadID);
  /// Takes the thread that a response names; returns its id.
  std::string enterThread(std::uint64_t operationGeneration, const JSONValue& response);
  Task<JSONValue> requestTurn(const std::string& threadID, const Input& input, const TurnOptions& turnOptions);
  /// Takes the turn that a response names, unless the operation has ended in the meantime.
  void enterTurn(std::uint64_t operationGeneration, const JSONValue& response);
  static Task<void> steerOn(Self self, Input input, TurnOptions turnOptions,
                            std::optional<std::uint64_t> expectedOperationGeneration);

  const AppServerTurnRunConfiguration configuration_;
  const ServerServices services_;
  RunLife life_;
  RunClosing closing_;

  // The state of the run.
  RunTransport transport_;
  RunRequests requests_;
  RunStream stream_;
  CoordinatorScope scope_;
  RunItems items_;
  RunServerRequests serverRequests_;
  const RunProblems problems_;

  // The logic that joins several parts of the state. Each sees the parts that it names.
  RunLifecycle lifecycle_;
  RequestSender sender_;
  CoordinatorTurn turn_;
  RunRecovery recovery_;
  ServerRequestDispatcher serverRequestDispatcher_;
  const NotificationContext notificationContext_;
};

}  // namespace ormel::detail
