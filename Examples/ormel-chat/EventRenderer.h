#pragma once

#include <optional>

#include "Console.h"
#include "ItemRenderer.h"
#include "JSONLines.h"
#include "OrmelSDK/Events/ThreadEvent.h"

namespace ormel::chat {

/// Shows the events of an operation to a person, or, as lines of JSON, to a program.
class EventRenderer {
 public:
  explicit EventRenderer(Console& console) : console_(console), items_(console) {}

  /// From now on, for a program.
  void showAsJSON(JSONUpdates updates) { json_.emplace(console_, updates); }

  void show(const ThreadEvent& event);

  /// The next output, also that of others, begins on a new line.
  void pause() { items_.closeBlock(); }

  /// No more events of the operation will come.
  void endOperation();

 private:
  void showEvent(const ItemStartedEvent& event) { items_.show(event.item, ItemStage::started); }
  void showEvent(const ItemUpdatedEvent& event) { items_.show(event.item, ItemStage::updated); }
  void showEvent(const ItemCompletedEvent& event) { items_.show(event.item, ItemStage::completed); }
  void showEvent(const TurnCompletedEvent& event);
  void showEvent(const TurnFailedEvent& event);
  void showEvent(const ThreadErrorEvent& event);
  void showEvent(const HookCompletedEvent& event);
  void showEvent(const ThreadGoalUpdatedEvent& event);
  void showEvent(const GuardianApprovalReviewCompletedEvent& event);
  void showEvent(const ThreadWarningEvent& event);
  void showEvent(const GuardianWarningEvent& event);
  void showEvent(const AuthRecoveryEvent& event);
  void showEvent(const DeprecationNoticeEvent& event);
  void showEvent(const ConfigWarningEvent& event);
  void showEvent(const ModelReroutedEvent& event);
  /// Events that a person need not see.
  template <typename Event>
  void showEvent(const Event&) {}

  void note(std::string_view text, Style style);

  Console& console_;
  ItemRenderer items_;
  std::optional<JSONLines> json_;
};

}  // namespace ormel::chat
