#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/AppServerRun/TurnRun/AppServerMessage.h"
#include "OrmelSDK/AppServerRun/TurnRun/CoordinatorScope.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunItems.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunRecovery.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunRequests.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunServerRequests.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunStream.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunTransport.h"
#include "OrmelSDK/Base/ByteBuffer.h"
#include "OrmelSDK/Concurrency/EventChannel.h"
#include "OrmelSDK/Concurrency/Strand.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Events/ThreadEvent.h"
#include "OrmelSDK/Input/ReviewTarget.h"
#include "OrmelSDK/Input/UserInput.h"
#include "OrmelSDK/Options/OrmelOptions.h"
#include "OrmelSDK/Options/ThreadOptions.h"
#include "OrmelSDK/Options/TurnOptions.h"
#include "OrmelSDK/Platform/BlockingWork.h"
#include "OrmelSDK/Platform/ProcessLauncher.h"

namespace ormel::detail {

struct ElicitationContext;

/// How long a run waits for what may never come. Only tests have others.
struct RunDurations {
  RunDurations() {}

  std::chrono::nanoseconds request = std::chrono::seconds(30);
  std::chrono::nanoseconds interruptGrace = std::chrono::seconds(3);
  std::chrono::nanoseconds livenessProbeInterval = std::chrono::seconds(120);
  std::chrono::nanoseconds processExitGrace = std::chrono::milliseconds(100);
};

/// What a run is made with, once for its life.
struct AppServerTurnRunConfiguration {
  AppServerTurnRunConfiguration() {}

  std::string executablePath;
  /// Put in front of the server's `PATH`.
  std::vector<std::string> ormelPathDirectories;
  OrmelOptions ormelOptions;
  ThreadOptions threadOptions;
  RunDurations durations;
};

/// The world that a run lives in. All of it must outlive the run and what the run has started.
struct RunServices {
  /// Threads, clock and processes of this machine.
  RunServices();
  RunServices(Scheduler& schedulerOfRun, ProcessLauncher& launcherOfRun, BlockingWork& blockingWorkOfRun)
      : scheduler(&schedulerOfRun), launcher(&launcherOfRun), blockingWork(&blockingWorkOfRun) {}

  Scheduler* scheduler;
  ProcessLauncher* launcher;
  BlockingWork* blockingWork;
};

/// A turn that the server has accepted, and the thread that it belongs to.
struct StartedTurn {
  StartedTurn(EventChannel<ThreadEvent> eventsOfTurn, std::string idOfThread)
      : events(std::move(eventsOfTurn)), threadID(std::move(idOfThread)) {}

  EventChannel<ThreadEvent> events;
  std::string threadID;
};

/// The engine behind a conversation. It owns one server process at a time and runs operations on it (turns, reviews,
/// compactions, side conversations), one at a time. The process outlives an operation that ends normally, and is reused
/// by the next one.
///
/// Every wait lets other work in. So all that is late carries the generation it was started under, of the transport or
/// of the operation, and does nothing when that has passed. An operation ends only by `finishStreamState`, and the
/// first end wins. `docs/turn-run.md` has the tables of states.
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
/// *Cancellation*: a start operation whose task is cancelled fails its operation as aborted.
class AppServerTurnRun final : public std::enable_shared_from_this<AppServerTurnRun> {
 public:
  static std::shared_ptr<AppServerTurnRun> create(AppServerTurnRunConfiguration configuration,
                                                  RunServices services = RunServices());

  AppServerTurnRun(const AppServerTurnRun&) = delete;
  AppServerTurnRun& operator=(const AppServerTurnRun&) = delete;
  ~AppServerTurnRun();

  const Strand& strand() const noexcept { return strand_; }

  /// Makes a new operation the current one, ahead of a start operation that is given its generation. Fails if one is
  /// running, which is untouched.
  Task<std::uint64_t> reserveOperation();

  /// Start operations. Without a prepared generation each reserves an operation itself. One that fails ends its
  /// operation and the process, save for a failure of the reservation.
  Task<StartedTurn> startTurn(std::optional<std::string> existingThreadID, Input input, TurnOptions turnOptions,
                              std::optional<std::uint64_t> preparedOperationGeneration = std::nullopt);
  Task<EventChannel<ThreadEvent>> startReview(std::string existingThreadID, ReviewTarget target,
                                              ReviewDelivery delivery,
                                              std::optional<std::uint64_t> preparedOperationGeneration = std::nullopt);
  Task<EventChannel<ThreadEvent>> startCompaction(
      std::string existingThreadID, std::optional<std::uint64_t> preparedOperationGeneration = std::nullopt);
  /// A turn on an ephemeral copy of the thread.
  Task<EventChannel<ThreadEvent>> startEphemeralForkTurn(
      std::string existingThreadID, Input input, std::string developerInstructions, TurnOptions turnOptions,
      std::optional<std::uint64_t> preparedOperationGeneration = std::nullopt);

  /// Adds input to the running turn.
  Task<void> steer(Input input, TurnOptions turnOptions,
                   std::optional<std::uint64_t> expectedOperationGeneration = std::nullopt);

  /// Answers the questions of the item `itemID`: for each question's id, the answers.
  Task<void> submitUserInput(std::string itemID, std::map<std::string, std::vector<std::string>> answers,
                             std::optional<std::uint64_t> expectedOperationGeneration = std::nullopt);

  /// Ends the operation as aborted: by way of the server if the turn is known, else at once. Does nothing for an
  /// operation that is not the expected one, or is being interrupted already. Reports no failure.
  Task<void> interruptFromSignal(std::optional<std::uint64_t> expectedOperationGeneration = std::nullopt);

  /// Ends whatever is under way, normally, and then the process: for an owner that goes away.
  Task<void> release();

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
  std::uint64_t protocolActivityGeneration() const noexcept { return protocolActivityGeneration_; }

 private:
  using Self = std::shared_ptr<AppServerTurnRun>;

  /// Who a probe asked about, and when.
  struct ProbedTurn {
    std::uint64_t activityGeneration;
    std::string threadID;
    std::string turnID;
    std::uint64_t operationGeneration;
  };

  /// Whom an interrupt is to end.
  struct InterruptedTurn {
    std::string threadID;
    std::string turnID;
    std::uint64_t operationGeneration;
  };

  struct Notifications;
  struct ServerRequests;

  AppServerTurnRun(AppServerTurnRunConfiguration configuration, RunServices services);

  // Life of an operation.
  static Task<std::uint64_t> reserveOn(Self self);
  static Task<void> releaseOn(Self self);
  std::uint64_t reserve();
  void prepareForNextTurn();
  void finishStreamState(const StreamCompletion& completion, std::optional<std::uint64_t> finishedOperationGeneration);
  void finishCurrent(const StreamCompletion& completion);
  /// Ends the operation only if it is still the current one.
  void finishIfCurrent(std::uint64_t operationGeneration, const StreamCompletion& completion);
  std::uint64_t admit(std::optional<std::uint64_t> preparedOperationGeneration);

  // Transport.
  Task<void> startProcess(std::uint64_t operationGeneration);
  void launchProcess();
  TerminationHandler terminationHandler(std::uint64_t transportGeneration);
  void coordinateProcessExit(std::uint64_t transportGeneration, const Termination& termination);
  /// Holds the run only while it works on a chunk: the run may be gone at any time.
  static Task<void> readStdoutLoop(std::weak_ptr<AppServerTurnRun> owner, ServerOutput output,
                                   std::uint64_t transportGeneration,
                                   std::shared_ptr<AppServerProcessExitCoordinator> exitCoordinator);
  /// Handles the lines that are there up to one that ends a request, and returns whether there was one: its waiter is
  /// to run before the next line, which may depend on what it makes of the response.
  bool handleLines(ServerOutput& output);
  bool isCurrentTransport(std::uint64_t transportGeneration) const noexcept {
    return transport_.generation() == transportGeneration;
  }
  /// `jsonPadding` readable bytes stand behind the line. Returns whether it ended a request.
  bool handleIncomingLine(std::string_view paddedLine) noexcept;
  bool handleMessage(const AppServerMessage& message);
  /// Whether the standard error of the process would tell why the operation ended.
  bool isErrorTextAwaited() const noexcept { return stream_.isPending() && !abortedByClient_; }
  void handleEOF(std::uint64_t transportGeneration);
  void handleProcessExit(std::uint64_t transportGeneration, const Termination& termination);
  void shutdownProcess();

  // Requests.
  Task<JSONValue> sendRequest(std::string method, std::optional<JSONValue> params);
  void writeNotification(std::string_view method, const std::optional<JSONValue>& params = std::nullopt);
  Timer requestTimer(const AppServerRequestID& id, std::string method,
                     std::optional<std::uint64_t> operationGeneration);
  void timeoutPendingRequest(const AppServerRequestID& id, std::string_view method,
                             std::optional<std::uint64_t> operationGeneration);
  void cancelPendingRequest(const AppServerRequestID& id);

  // Scope.
  void adoptCoordinatorTurn(std::string turnID);
  void drainDeferredTurnStartedNotifications();
  void drainDeferredTurnCompletions();
  void deferUntilTurnIsKnown(void (CoordinatorScope::*defer)(DeferredTurnNotification), const JSONValue& params,
                             std::string_view turnID);
  void handleServerNotification(const ServerNotificationMessage& notification);
  /// See `CoordinatorScope::notificationBelongs`; nothing belongs to an operation that has ended.
  bool notificationBelongsToCoordinator(const JSONObject& params,
                                        const std::optional<std::string_view>& embeddedThreadID = std::nullopt,
                                        const std::optional<std::string_view>& embeddedTurnID = std::nullopt) const;
  void emitTurnStartedNotification(const JSONObject& params);
  void handleTurnCompleted(const JSONObject& params);
  void completeItemsOfTurn(const JSONObject& turn, const std::string& turnID);
  /// Keeps an item that may come at any time; returns whether there was none under its id. One that belongs to no
  /// operation is dropped: an idle server may talk for ever.
  bool keepForOperation(const ThreadItem& item);

  // Recovery.
  void scheduleLivenessProbe();
  void beginReconciliation(ProbedTurn probed);
  static Task<void> reconcileCoordinatorTurnLiveness(Self self, ProbedTurn expected, std::stop_token stop);
  bool isUnchanged(const ProbedTurn& expected, const std::stop_token& stop) const;
  void applyReconciliation(const JSONValue& response, const ProbedTurn& expected);
  static Task<void> interrupt(Self self, std::optional<std::uint64_t> expectedOperationGeneration);
  void scheduleInterruptCompletionGrace(InterruptedTurn turn);
  bool awaitsEndOf(const InterruptedTurn& turn) const;

  // Operations.
  static Task<StartedTurn> startTurnOn(Self self, std::optional<std::string> existingThreadID, Input input,
                                       TurnOptions turnOptions, std::optional<std::uint64_t> prepared);
  static Task<EventChannel<ThreadEvent>> startReviewOn(Self self, std::string existingThreadID, ReviewTarget target,
                                                       ReviewDelivery delivery, std::optional<std::uint64_t> prepared);
  static Task<EventChannel<ThreadEvent>> startCompactionOn(Self self, std::string existingThreadID,
                                                           std::optional<std::uint64_t> prepared);
  static Task<EventChannel<ThreadEvent>> startEphemeralForkTurnOn(Self self, std::string existingThreadID, Input input,
                                                                  std::string developerInstructions,
                                                                  TurnOptions turnOptions,
                                                                  std::optional<std::uint64_t> prepared);
  static Task<void> steerOn(Self self, Input input, TurnOptions turnOptions,
                            std::optional<std::uint64_t> expectedOperationGeneration);
  Task<EventChannel<ThreadEvent>> openOperation(std::uint64_t operationGeneration);
  Task<void> initializeIfNeeded(std::uint64_t operationGeneration);
  void applySkillExtraRootsIfNeeded();
  Task<std::string> beginTurn(std::uint64_t operationGeneration, std::optional<std::string> existingThreadID,
                              const Input& input, const TurnOptions& turnOptions);
  Task<void> beginReview(std::uint64_t operationGeneration, std::string existingThreadID, const ReviewTarget& target,
                         ReviewDelivery delivery);
  Task<void> beginCompaction(std::uint64_t operationGeneration, std::string existingThreadID);
  Task<void> beginForkTurn(std::uint64_t operationGeneration, std::string existingThreadID, const Input& input,
                           std::string developerInstructions, const TurnOptions& turnOptions);
  Task<void> resumeThread(std::uint64_t operationGeneration, const std::string& threadID);
  /// Takes the thread that a response names; returns its id.
  std::string enterThread(std::uint64_t operationGeneration, const JSONValue& response);
  Task<JSONValue> requestTurn(const std::string& threadID, const Input& input, const TurnOptions& turnOptions);
  /// Takes the turn that a response names, unless the operation has ended in the meantime.
  void enterTurn(std::uint64_t operationGeneration, const JSONValue& response);

  // Requests of the server.
  void dispatchServerRequest(const ServerRequestMessage& request);
  /// Works an answer out, and writes it if it is still wanted then.
  static Task<void> serve(std::weak_ptr<AppServerTurnRun> owner, AppServerRequestID id, ServerRequestScope scope,
                          Task<JSONValue> response, std::optional<ElicitationContext> context);
  /// Takes the request out, unless its answer is not wanted any more.
  bool takePendingServerRequest(const AppServerRequestID& id, const ServerRequestScope& scope);
  void completePendingServerRequest(const AppServerRequestID& id, const ServerRequestScope& scope,
                                    const JSONValue& result, const std::optional<ElicitationContext>& context);
  void failPendingServerRequest(const AppServerRequestID& id, const ServerRequestScope& scope,
                                const std::exception_ptr& error);
  void applyServerRequestResult(const AppServerRequestID& id, const JSONValue& result,
                                const std::optional<ElicitationContext>& context);
  void respondToServerRequest(const AppServerRequestID& id, const JSONValue& result);
  void respondToServerRequestError(const AppServerRequestID& id, std::int64_t code, const std::string& message);
  static Task<void> submitUserInputOn(Self self, std::string itemID,
                                      std::map<std::string, std::vector<std::string>> answers,
                                      std::optional<std::uint64_t> expectedOperationGeneration);
  void completeUserInputItem(const std::string& itemID, const JSONValue& answers, std::uint64_t operationGeneration);

  const AppServerTurnRunConfiguration configuration_;
  const RunServices services_;
  const Strand strand_;

  RunTransport transport_;
  RunRequests requests_;
  RunStream stream_;
  CoordinatorScope scope_;
  RunRecovery recovery_;
  RunItems items_;
  RunServerRequests serverRequests_;

  /// The application has asked for the end of the current operation.
  bool abortedByClient_ = false;
  /// Counts the well-formed messages of the server, by which its silence is noticed.
  std::uint64_t protocolActivityGeneration_ = 0;
};

}  // namespace ormel::detail
