#pragma once

#include <string_view>
#include <tuple>

#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Items/NoticeItems.h"

template <>
struct ormel::coding::RecordTable<ormel::ReviewModeItem> {
  static constexpr auto fields =
      std::tuple(required<&ReviewModeItem::id>("id"), required<&ReviewModeItem::review>("review"));
};
ORMEL_DECLARE_CODEC(ReviewModeItem)

template <>
struct ormel::coding::RecordTable<ormel::ContextCompactionItem> {
  static constexpr auto fields = std::tuple(required<&ContextCompactionItem::id>("id"));
};
ORMEL_DECLARE_CODEC(ContextCompactionItem)

template <>
struct ormel::coding::RecordTable<ormel::SleepItem> {
  static constexpr std::string_view writtenType = "sleep";
  static constexpr auto fields = std::tuple(required<&SleepItem::id>("id"),
                                            optional<&SleepItem::durationMilliseconds>("durationMs", "duration_ms"));
};
ORMEL_DECLARE_CODEC(SleepItem)

template <>
struct ormel::coding::RecordTable<ormel::ErrorItem> {
  static constexpr auto fields = std::tuple(required<&ErrorItem::id>("id"), required<&ErrorItem::message>("message"));
};
ORMEL_DECLARE_CODEC(ErrorItem)

ORMEL_DECLARE_CODEC(UnknownThreadItem)
