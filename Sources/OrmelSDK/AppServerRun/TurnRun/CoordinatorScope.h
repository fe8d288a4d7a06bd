#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/AppServerRun/Parsing/MessageParams.h"
#include "OrmelSDK/AppServerRun/Parsing/ThreadItemParsing.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// A notification about a turn that came before the run knew which turn is its own.
struct DeferredTurnNotification {
  std::uint64_t operationGeneration = 0;
  JSONValue params;
  std::string turnID;
};
using DeferredTurnStarted = DeferredTurnNotification;
using DeferredTurnCompletion = DeferredTurnNotification;

/// Which thread and turn a run regards as its own (the coordinator), and which notifications are about them.
///
/// One server process tells of many threads and turns: sub-agents, reviews and forks have their own.
///
/// *Thread safety*: none; it belongs to the run's strand.
class CoordinatorScope {
 public:
  /// How many notifications of each kind wait for the identity of the turn; more mean that something is wrong.
  static constexpr std::size_t maximumDeferred = 16;

  /// The thread and turn that requests are addressed to. The thread outlives a normal end of the operation.
  const ActiveScope& active() const noexcept { return active_; }
  const std::optional<std::string>& coordinatorThreadID() const noexcept { return coordinatorThreadID_; }
  const std::optional<std::string>& coordinatorTurnID() const noexcept { return coordinatorTurnID_; }
  bool acceptsCoordinatorTurnIdentityFromNotification() const noexcept {
    return acceptsCoordinatorTurnIdentityFromNotification_;
  }

  /// Whether the coordinator is this thread and this turn.
  bool isCoordinator(std::string_view threadID, std::string_view turnID) const noexcept {
    return coordinatorThreadID_ == threadID && coordinatorTurnID_ == turnID;
  }

  void setCoordinatorThread(std::string threadID);
  /// From here on no notification may name the turn.
  void setCoordinatorTurn(std::string turnID);

  /// Lets "turn/started" name the turn of an operation whose response does not.
  void acceptCoordinatorTurnIdentityFromNotification() noexcept {
    acceptsCoordinatorTurnIdentityFromNotification_ = true;
  }

  /// The operation moves on to another thread.
  void prepareForCoordinatorThreadTransition();

  /// Forgets the coordinator, and the notifications that wait for it.
  void resetCoordinatorIdentity();

  /// These reset what must not outlive an operation, or the process. The active thread outlives an operation.
  void prepareForNextTurn() { prepareForCoordinatorThreadTransition(); }
  void operationDidEnd();
  void processDidEnd();

  /// Whether a notification of the current operation is about the coordinator. One that names no thread or no turn is:
  /// absence is no mismatch. The embedded ids stand in for ids that the params lack, and come by reference because
  /// they are looked at only then.
  bool notificationBelongs(const MessageIDs& ids,
                           const std::optional<std::string_view>& embeddedThreadID = std::nullopt,
                           const std::optional<std::string_view>& embeddedTurnID = std::nullopt) const;

  /// The stricter test of a "turn/completed": the turn must be known and be this one.
  bool turnCompletionBelongs(const MessageIDs& ids, std::string_view turnID) const;

  /// Whether a "turn/started" may define the turn: it names the coordinator's thread.
  bool namesCoordinatorThread(const MessageIDs& ids) const;

  /// Fail with `ThreadRunError` of the kind `streamError` when too many wait.
  void deferTurnStarted(DeferredTurnStarted notification);
  void deferTurnCompletion(DeferredTurnCompletion notification);

  /// Takes all out, and gives the params of the first that is about the coordinator's turn in this operation.
  std::optional<JSONValue> takeDeferredTurnStarted(std::optional<std::uint64_t> runningGeneration);
  std::optional<JSONValue> takeDeferredTurnCompletion(std::optional<std::uint64_t> runningGeneration);

 private:
  void dropDeferred();

  template <typename ThreadMatches>
  std::optional<JSONValue> takeDeferred(std::vector<DeferredTurnNotification>& list,
                                        std::optional<std::uint64_t> runningGeneration, ThreadMatches threadMatches);

  ActiveScope active_;
  std::optional<std::string> coordinatorThreadID_;
  std::optional<std::string> coordinatorTurnID_;
  bool acceptsCoordinatorTurnIdentityFromNotification_ = false;
  std::vector<DeferredTurnStarted> deferredTurnStartedNotifications_;
  std::vector<DeferredTurnCompletion> deferredTurnCompletions_;
};

}  // namespace ormel::detail
