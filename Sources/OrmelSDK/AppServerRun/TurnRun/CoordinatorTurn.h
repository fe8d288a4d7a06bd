#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "OrmelSDK/AppServerRun/Parsing/MessageParams.h"
#include "OrmelSDK/AppServerRun/TurnRun/CoordinatorScope.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

class RunItems;
class RunLifecycle;
class RunRecovery;
class RunStream;

/// The turn that a run follows, from the moment that it becomes known to its end.
///
/// *Thread safety*: none; it belongs to the run's strand.
class CoordinatorTurn {
 public:
  struct Context {
    RunStream& stream;
    CoordinatorScope& scope;
    RunItems& items;
    RunRecovery& recovery;
    RunLifecycle& lifecycle;
  };
  explicit CoordinatorTurn(const Context& context) : run_(context) {}

  /// See `CoordinatorScope::notificationBelongs`; nothing belongs to an operation that has ended.
  bool notificationBelongsToCoordinator(const MessageIDs& ids,
                                        const std::optional<std::string_view>& embeddedThreadID = std::nullopt,
                                        const std::optional<std::string_view>& embeddedTurnID = std::nullopt) const;
  bool turnCompletionBelongsToCoordinator(const MessageIDs& ids, std::string_view turnID) const;

  /// Begins to follow the turn, and handles the notifications that were deferred until now, which may end the
  /// operation.
  void setCoordinatorTurn(std::string turnID);

  /// Keep a notification until the turn is known. Fail with `ThreadRunError` of the kind `streamError` when too many
  /// wait.
  void deferTurnStartedNotification(const JSONValue& params, std::string_view turnID);
  void deferTurnCompletion(const JSONValue& params, std::string_view turnID);

  void emitTurnStartedNotification(const JSONObject& params);

  /// Ends the operation as `turn`, the object that the server tells of the turn, says.
  void handleTurnCompleted(const JSONObject& turn, std::string_view turnID);

 private:
  void drainDeferredTurnStartedNotifications();
  void drainDeferredTurnCompletions();
  std::optional<DeferredTurnNotification> deferred(const JSONValue& params, std::string_view turnID) const;
  void completeItems(const JSONObject& turn, std::string_view turnID);

  const Context run_;
};

}  // namespace ormel::detail
