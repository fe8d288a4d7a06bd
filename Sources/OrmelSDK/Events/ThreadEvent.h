#pragma once

#include <iosfwd>
#include <string>
#include <utility>
#include <variant>

#include "OrmelSDK/Base/Visit.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Events/GuardianReviewEvents.h"
#include "OrmelSDK/Events/HookEvents.h"
#include "OrmelSDK/Events/ItemEvents.h"
#include "OrmelSDK/Events/ModelEvents.h"
#include "OrmelSDK/Events/ThreadStateEvents.h"
#include "OrmelSDK/Events/TurnEvents.h"
#include "OrmelSDK/Events/WarningEvents.h"

namespace ormel {

/// An event of a type that this library does not know; only its type is kept.
struct UnknownThreadEvent {
  std::string type;
  friend bool operator==(const UnknownThreadEvent&, const UnknownThreadEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const UnknownThreadEvent& value);
};

/// Anything that happens in a run, as the application sees it. Use `visit` to tell the cases apart; a function of
/// `AuthRecoveryEvent` serves its beginning and its end, unless a generic function takes them away from it.
///
/// Its JSON form: a flat object of the record's members and a `type` word. It reads back to an equal event, but for
/// the items whose own form does not. A word that is not known makes an `UnknownThreadEvent`; a known one whose record
/// does not decode is an error. The forms of the events by themselves are without the word, and a few of their keys
/// are spelled otherwise.
///
/// *Thread safety*: a plain value; may be copied between threads and read by many at once.
struct ThreadEvent {
  using Value =
      std::variant<ThreadStartedEvent, TurnStartedEvent, HookStartedEvent, TurnCompletedEvent, HookCompletedEvent,
                   TurnFailedEvent, ThreadGoalUpdatedEvent, ThreadGoalClearedEvent, ThreadSettingsUpdatedEvent,
                   ItemStartedEvent, ItemUpdatedEvent, ItemCompletedEvent, GuardianApprovalReviewStartedEvent,
                   GuardianApprovalReviewCompletedEvent, ThreadWarningEvent, GuardianWarningEvent,
                   AuthRecoveryStartedEvent, AuthRecoveryCompletedEvent, StrictReviewRequiredEvent,
                   DeprecationNoticeEvent, ConfigWarningEvent, ModelVerificationEvent, ModelReroutedEvent,
                   ModelSafetyBufferingUpdatedEvent, TurnModerationMetadataEvent, ThreadErrorEvent, UnknownThreadEvent>;

  Value value;

  // Copying and moving a variant of so many cases is much code; it is compiled once, not in every file that does it.
  ThreadEvent();
  ThreadEvent(const ThreadEvent& other);
  ThreadEvent(ThreadEvent&& other) noexcept;
  ThreadEvent& operator=(const ThreadEvent& other);
  ThreadEvent& operator=(ThreadEvent&& other) noexcept;
  ~ThreadEvent();

  /// Makes an event from the record of any of the cases.
  template <CaseOf<Value> Event>
  ThreadEvent(Event event) : value(std::move(event)) {}

  /// The same, made in place from what the record is made of.
  template <CaseOf<Value> Event, typename... Arguments>
  explicit ThreadEvent(std::in_place_type_t<Event> kind, Arguments&&... arguments)
      : value(kind, std::forward<Arguments>(arguments)...) {}

  friend bool operator==(const ThreadEvent&, const ThreadEvent&);
  friend std::ostream& operator<<(std::ostream& stream, const ThreadEvent& value);
};

}  // namespace ormel
