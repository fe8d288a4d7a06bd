#pragma once

#include <tuple>

#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Events/WarningEvents.h"

template <>
struct ormel::coding::RecordTable<ormel::ThreadWarningEvent> {
  static constexpr auto fields = std::tuple(optional<&ThreadWarningEvent::threadID>("thread_id", "threadId"),
                                            required<&ThreadWarningEvent::message>("message"));
};
ORMEL_DECLARE_CODEC(ThreadWarningEvent)

template <>
struct ormel::coding::RecordTable<ormel::AuthRecoveryEvent> {
  static constexpr auto fields =
      std::tuple(required<&AuthRecoveryEvent::threadID>("thread_id", "threadId"),
                 required<&AuthRecoveryEvent::turnID>("turn_id", "turnId"),
                 required<&AuthRecoveryEvent::provider>("provider"), required<&AuthRecoveryEvent::message>("message"));
};
ORMEL_DECLARE_CODEC(AuthRecoveryEvent)

template <>
struct ormel::coding::RecordTable<ormel::DeprecationNoticeEvent> {
  static constexpr auto fields = std::tuple(required<&DeprecationNoticeEvent::summary>("summary"),
                                            optional<&DeprecationNoticeEvent::details>("details"));
};
ORMEL_DECLARE_CODEC(DeprecationNoticeEvent)

template <>
struct ormel::coding::RecordTable<ormel::TextPosition> {
  static constexpr auto fields =
      std::tuple(required<&TextPosition::line>("line"), required<&TextPosition::column>("column"));
};
ORMEL_DECLARE_CODEC(TextPosition)

template <>
struct ormel::coding::RecordTable<ormel::TextRange> {
  static constexpr auto fields = std::tuple(required<&TextRange::start>("start"), required<&TextRange::end>("end"));
};
ORMEL_DECLARE_CODEC(TextRange)

template <>
struct ormel::coding::RecordTable<ormel::ConfigWarningEvent> {
  static constexpr auto fields =
      std::tuple(required<&ConfigWarningEvent::summary>("summary"), optional<&ConfigWarningEvent::details>("details"),
                 optional<&ConfigWarningEvent::path>("path"), optional<&ConfigWarningEvent::range>("range"));
};
ORMEL_DECLARE_CODEC(ConfigWarningEvent)
