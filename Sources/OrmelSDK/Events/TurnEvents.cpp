#include "OrmelSDK/Events/TurnEvents.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::TurnStartedEvent> {
  static constexpr Field fields[] = {
      optional<&TurnStartedEvent::modelContextWindow>("model_context_window"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::Usage> {
  static constexpr Field fields[] = {
      optional<&Usage::totalTokens>("total_tokens"),
      required<&Usage::inputTokens>("input_tokens"),
      required<&Usage::cachedInputTokens>("cached_input_tokens"),
      required<&Usage::outputTokens>("output_tokens"),
      optional<&Usage::modelContextWindow>("model_context_window"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::TurnCompletedEvent> {
  static constexpr Field fields[] = {
      required<&TurnCompletedEvent::usage>("usage"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadError> {
  static constexpr Field fields[] = {
      required<&ThreadError::message>("message"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::TurnFailedEvent> {
  static constexpr Field fields[] = {
      required<&TurnFailedEvent::error>("error"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadErrorEvent> {
  static constexpr Field fields[] = {
      required<&ThreadErrorEvent::message>("message"),
  };
};

ORMEL_DEFINE_HOT_RECORD(TurnStartedEvent)
ORMEL_DEFINE_HOT_RECORD(Usage)
ORMEL_DEFINE_HOT_RECORD(TurnCompletedEvent)
ORMEL_DEFINE_HOT_RECORD(ThreadError)
ORMEL_DEFINE_HOT_RECORD(TurnFailedEvent)
ORMEL_DEFINE_HOT_RECORD(ThreadErrorEvent)
