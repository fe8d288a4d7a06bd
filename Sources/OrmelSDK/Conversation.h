#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "OrmelSDK/AppServerRun/Connection/ServerServices.h"
#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun.h"
#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Options/AbortSignal.h"
#include "OrmelSDK/Thread.h"

namespace ormel::detail {

/// The state that the handles of one `Thread` share. It reserves each operation on its run, connects it to the
/// application's signal, and forwards the events.
///
/// *Thread safety*: the operations may be called from any thread. The lock is held for short reads and writes only.
///
/// *Object lifetimes*: held by shared pointers; an operation holds it until the events have ended. When it goes, its
/// run is ended in the background.
class Conversation final {
 public:
  using Self = std::shared_ptr<Conversation>;

  explicit Conversation(AppServerTurnRunConfiguration configuration, std::optional<std::string> threadID = std::nullopt,
                        ServerServices services = ServerServices());
  Conversation(const Conversation&) = delete;
  Conversation& operator=(const Conversation&) = delete;
  ~Conversation();

  std::optional<std::string> id() const;

  static Task<Turn> run(Self self, Input input, TurnOptions turnOptions);
  static Task<StreamedTurn> runStreamedInternal(Self self, Input input, TurnOptions turnOptions);
  static Task<StreamedTurn> startReviewStreamed(Self self, ReviewTarget target, ReviewDelivery delivery,
                                                std::optional<AbortSignal> signal);
  static Task<StreamedTurn> compactStreamed(Self self, std::optional<AbortSignal> signal);
  static Task<StreamedTurn> runSideConversationStreamed(Self self, Input input, std::string developerInstructions,
                                                        TurnOptions turnOptions);
  static Task<void> steer(Self self, Input input, TurnOptions turnOptions);
  static Task<void> submitRequestUserInput(Self self, std::string itemID,
                                           std::map<std::string, std::vector<std::string>> answers);
  static Task<void> interrupt(Self self);
  static Task<void> idle(Self self);
  static Task<void> close(Self self);

  using Run = std::shared_ptr<AppServerTurnRun>;

  struct ActiveOperation {
    Run run;
    std::uint64_t generation = 0;
    friend bool operator==(const ActiveOperation&, const ActiveOperation&) = default;
  };

  /// The run of all operations, made at the first use. Public for the tests, like the next.
  Run reusableRun();
  /// The operation under way, from its reservation until its end has been forwarded.
  std::optional<ActiveOperation> currentOperation() const;

 private:
  /// The ways in which the application ends an operation from outside.
  struct Interruptions {
    Interruptions() = default;
    Interruptions(std::optional<AbortSignal> bySignal, std::optional<std::chrono::nanoseconds> byTimeout)
        : signal(std::move(bySignal)), timeout(byTimeout) {}

    std::optional<AbortSignal> signal;
    std::optional<std::chrono::nanoseconds> timeout;
  };

  /// An operation and what its end has to undo.
  struct ConnectedOperation {
    ActiveOperation operation;
    Interruptions by;
    UUID signalToken;
    Timer timer;
    /// Set when the time-out has interrupted the operation.
    std::shared_ptr<std::atomic<bool>> isDue;

    /// The failure of the operation: its own, or the time-out that has led to it.
    std::exception_ptr failure(const std::exception_ptr& own) const;
  };

  /// The conversation's id; fails with `ThreadRunError` of the kind `streamError` and the message without one.
  std::string neededThreadID(const char* message) const;
  static Task<ConnectedOperation> connectOperation(Self self, Interruptions by);
  void noteOperation(const ActiveOperation& operation);
  void updateThreadID(const std::string& threadID, const ActiveOperation& operation);

  /// Starts any operation, and forwards its events. `restoringThreadID` is the conversation's thread, to which it
  /// returns from an operation on another one; the conversation follows an operation without one.
  static Task<StreamedTurn> start(Self self, OperationRequest request, Interruptions by,
                                  std::optional<std::string> restoringThreadID = std::nullopt);
  StreamedTurn wrapOperationEvents(const Self& self, EventChannel<ThreadEvent> events, ConnectedOperation connected,
                                   std::optional<std::string> restoringThreadID);
  static Task<void> forwardEvents(Self self, EventChannel<ThreadEvent> from, EventProducer<ThreadEvent> to,
                                  ConnectedOperation connected, std::optional<std::string> restoringThreadID);
  void finishActiveOperation(const ConnectedOperation& connected,
                             std::optional<std::string> restoringThreadID) noexcept;
  static Task<void> released(Run run);

  const AppServerTurnRunConfiguration configuration_;
  const ServerServices services_;

  mutable std::mutex lock_;
  std::optional<std::string> threadID_;
  std::optional<ActiveOperation> currentOperation_;
  Run persistentRun_;
  bool isClosed_ = false;
  /// Waiters for the end of the operation, by a number of their own.
  std::map<std::uint64_t, OneShotResolver<void>> idleWaiters_;
  std::uint64_t nextIdleWaiter_ = 0;
};

}  // namespace ormel::detail
