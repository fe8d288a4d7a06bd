#pragma once

#include "Console.h"
#include "ItemRenderer.h"
#include "OrmelSDK/Events/ThreadEvent.h"

namespace ormel::chat {

/// Shows the events of an operation to a person, or, as lines of JSON, to a program.
class EventRenderer {
 public:
  EventRenderer(Console& console, bool json) : console_(console), items_(console), json_(json) {}

  void show(const ThreadEvent& event);

  /// The next output, also that of others, begins on a new line.
  void pause() { items_.closeBlock(); }

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
  bool json_;
};

}  // namespace ormel::chat
