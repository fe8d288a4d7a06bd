#pragma once

#include <tuple>

#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Events/TurnEvents.h"

template <>
struct ormel::coding::RecordTable<ormel::TurnStartedEvent> {
  static constexpr auto fields = std::tuple(optional<&TurnStartedEvent::modelContextWindow>("model_context_window"));
};
ORMEL_DECLARE_CODEC(TurnStartedEvent)

template <>
struct ormel::coding::RecordTable<ormel::Usage> {
  static constexpr auto fields = std::tuple(
      optional<&Usage::totalTokens>("total_tokens"), required<&Usage::inputTokens>("input_tokens"),
      required<&Usage::cachedInputTokens>("cached_input_tokens"), required<&Usage::outputTokens>("output_tokens"),
      optional<&Usage::modelContextWindow>("model_context_window"));
};
ORMEL_DECLARE_CODEC(Usage)

template <>
struct ormel::coding::RecordTable<ormel::TurnCompletedEvent> {
  static constexpr auto fields = std::tuple(required<&TurnCompletedEvent::usage>("usage"));
};
ORMEL_DECLARE_CODEC(TurnCompletedEvent)

template <>
struct ormel::coding::RecordTable<ormel::ThreadError> {
  static constexpr auto fields = std::tuple(required<&ThreadError::message>("message"));
};
ORMEL_DECLARE_CODEC(ThreadError)

template <>
struct ormel::coding::RecordTable<ormel::TurnFailedEvent> {
  static constexpr auto fields = std::tuple(required<&TurnFailedEvent::error>("error"));
};
ORMEL_DECLARE_CODEC(TurnFailedEvent)

template <>
struct ormel::coding::RecordTable<ormel::ThreadErrorEvent> {
  static constexpr auto fields = std::tuple(required<&ThreadErrorEvent::message>("message"));
};
ORMEL_DECLARE_CODEC(ThreadErrorEvent)
