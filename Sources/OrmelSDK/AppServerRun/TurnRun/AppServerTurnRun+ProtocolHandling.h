#pragma once

#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "OrmelSDK/AppServerRun/Parsing/MessageParams.h"
#include "OrmelSDK/AppServerRun/Parsing/ThreadItemDeltas.h"
#include "OrmelSDK/AppServerRun/TurnRun/AppServerMessage.h"
#include "OrmelSDK/AppServerRun/TurnRun/CoordinatorTurn.h"
#include "OrmelSDK/AppServerRun/TurnRun/NotificationContext.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunItems.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunProblems.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunServerRequests.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunStream.h"
#include "OrmelSDK/Coding/JSONMembers.h"

namespace ormel::detail {

/// Handles a notification by its method; one of an unknown method is ignored. Fails with `ThreadRunError` of the kind
/// `streamError`, or a `DecodingError`, when the notification lacks what it is about.
void handleServerNotification(const NotificationContext& run, const ServerNotificationMessage& notification);

/// The meaning of one notification: events, and changes to the run's items. Its members fail as
/// `handleServerNotification`.
class NotificationHandlers {
 public:
  NotificationHandlers(const NotificationContext& run, std::string_view method, const JSONValue& paramsValue)
      : run_(run),
        method_(method),
        paramsValue_(paramsValue),
        params_(*paramsValue.objectValue()),
        ids_(idsIn(params_)) {}

  bool belongsToCoordinator() const { return run_.turn.notificationBelongsToCoordinator(ids_); }

  // Threads and turns.
  void threadStarted() const;
  void turnStarted() const;
  void turnCompleted() const;
  void threadGoalUpdated() const;
  void threadGoalCleared() const;
  void threadSettingsUpdated() const;
  void tokenUsageUpdated() const;
  void handleTurnPlanUpdated() const;
  void turnModerationMetadata() const;

  // Items.
  void itemStarted() const;
  void itemUpdated() const;
  void itemCompleted() const;
  void handleAgentMessageDelta() const;
  void handleCommandOutputDelta() const;
  void handleMcpToolCallProgress() const;
  void handleFileChangePatchUpdated() const;
  void reasoningDelta() const { handleReasoningLikeDelta(false); }
  void planDelta() const { handleReasoningLikeDelta(true); }
  /// Whether the method says that the context was compacted.
  bool emitContextCompactionEventIfNeeded(std::string_view method) const;

  // Hooks, reviews, models, warnings.
  void hookStarted() const;
  void hookCompleted() const;
  void guardianApprovalReviewStarted() const { handleGuardianApprovalReviewNotification(false); }
  void guardianApprovalReviewCompleted() const { handleGuardianApprovalReviewNotification(true); }
  void guardianWarning() const;
  void strictReviewRequired() const;
  void authRecoveryStarted() const;
  void authRecoveryCompleted() const;
  void modelVerification() const;
  void modelRerouted() const;
  void modelSafetyBufferingUpdated() const;
  void error() const;
  void warning() const;
  void deprecationNotice() const;
  void configWarning() const;

  void serverRequestResolved() const;

 private:
  template <typename Event>
  void emitEvent(Event event) const {
    run_.stream.emitEvent(std::move(event));
  }
  /// The record that the params are; nothing, which the application is told of, if they do not decode.
  template <typename Record>
  std::optional<Record> decodedParams() const {
    try {
      return decode<Record>(paramsValue_);
    } catch (const DecodingError&) {
      run_.problems.malformedNotification(method_, std::current_exception());
      return std::nullopt;
    }
  }
  /// Keeps the item's new state and tells of it.
  void update(ThreadItem item) const;
  /// Tells of an item whose state was changed where it is kept.
  void emitUpdated(const ThreadItem& item) const { run_.stream.emitEvent(std::in_place_type<ItemUpdatedEvent>, item); }
  /// The same for an item whose text has grown.
  template <typename Item>
  void emitGrown(Item& item, SharedText Item::* text) const {
    run_.stream.emitEvent(std::in_place_type<ItemUpdatedEvent>,
                          GrownItemCopy<Item>(item, text, run_.items.snapshots()));
  }
  std::optional<ThreadItem> storedItem() const;
  void handleReasoningLikeDelta(bool isPlan) const;
  void handleGuardianApprovalReviewNotification(bool isCompleted) const;

  std::string_view neededText(JSONKeys keys, const char* message) const;
  const JSONValue& needed(JSONKeys keys, const char* message) const;
  std::string neededThreadID(const char* message) const;

  /// The ids that the notification names.
  std::optional<std::string> namedThreadID() const { return owned(ids_.threadID); }
  std::optional<std::string> namedTurnID() const { return owned(ids_.turnID); }
  /// The id that the notification names, else that of the run's thread or turn, else an empty one.
  std::string threadID() const;
  std::string turnID() const;

  static std::optional<std::string> owned(const std::optional<std::string_view>& text) {
    return text ? std::optional<std::string>(*text) : std::nullopt;
  }

  const NotificationContext& run_;
  const std::string_view method_;
  const JSONValue& paramsValue_;
  const JSONObject& params_;
  const MessageIDs ids_;
};

}  // namespace ormel::detail
