#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "OrmelSDK/AppServerRun/Parsing/ThreadItemDeltas.h"
#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun.h"
#include "OrmelSDK/Coding/JSONMembers.h"

namespace ormel::detail {

/// What one notification of the server means: events, and the state of the run's items. A member fails with
/// `ThreadRunError` of the kind `streamError`, or a `DecodingError`, when the notification lacks what it is about.
struct AppServerTurnRun::Notifications {
  /// Handles a notification by its method; one of an unknown method is ignored.
  static void handle(AppServerTurnRun& run, const ServerNotificationMessage& notification);

  // Threads and turns.
  void threadStarted() const;
  void turnStarted() const;
  void turnCompleted() const;
  void threadGoalUpdated() const;
  void threadGoalCleared() const;
  void threadSettingsUpdated() const;
  void tokenUsageUpdated() const;
  void turnPlanUpdated() const;
  void turnModerationMetadata() const;

  // Items.
  void itemStarted() const;
  void itemUpdated() const;
  void itemCompleted() const;
  void agentMessageDelta() const;
  void commandOutputDelta() const;
  void mcpToolCallProgress() const;
  void fileChangePatchUpdated() const;
  void reasoningDelta() const;
  void planDelta() const;
  /// Whether the method says that the context was compacted.
  bool contextCompaction(std::string_view method) const;

  // Hooks, reviews, models, warnings.
  void hookStarted() const;
  void hookCompleted() const;
  void guardianReviewStarted() const;
  void guardianReviewCompleted() const;
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

  AppServerTurnRun& run;
  const JSONValue& paramsValue;
  const JSONObject& params;

 private:
  template <class Event>
  void emit(Event event) const {
    run.stream_.emit(std::move(event));
  }
  /// Keeps the item's new state and tells of it.
  void update(ThreadItem item) const;
  /// Tells of an item whose state was changed where it is kept.
  void emitUpdated(const ThreadItem& item) const { run.stream_.emit(std::in_place_type<ItemUpdatedEvent>, item); }
  /// The same for one whose text has grown.
  template <class Item>
  void emitGrown(Item& item, SharedText Item::* text) const {
    run.stream_.emit(std::in_place_type<ItemUpdatedEvent>, GrownItemCopy<Item>(item, text, run.items_.snapshots()));
  }
  std::optional<ThreadItem> storedItem() const;
  void reasoningLikeDelta(bool isPlan) const;
  void guardianReview(bool isCompleted) const;

  std::string_view neededText(JSONKeys keys, const char* message) const;
  const JSONValue& needed(JSONKeys keys, const char* message) const;
  /// The id that the notification names, else that of what the run works on, else nothing.
  std::string threadID() const;
  std::string turnID() const;
};

}  // namespace ormel::detail
