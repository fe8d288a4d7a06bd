#pragma once

#include <string_view>
#include <tuple>

#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Coding/SharedTextCodec.h"
#include "OrmelSDK/Items/PlanningItems.h"

template <>
struct ormel::coding::RecordTable<ormel::PlanItem> {
  static constexpr auto fields = std::tuple(required<&PlanItem::id>("id"), required<&PlanItem::text>("text"));
};
ORMEL_DECLARE_CODEC(PlanItem)

template <>
struct ormel::coding::RecordTable<ormel::ReasoningItem> {
  static constexpr std::string_view writtenType = "reasoning";
  static constexpr auto fields =
      std::tuple(required<&ReasoningItem::id>("id"), defaulted<&ReasoningItem::summary>("summary"),
                 defaulted<&ReasoningItem::content>("content"));
  static void finish(ReasoningItem& item, const JSONObject& object, const CodingPath& path);
};
ORMEL_DECLARE_CODEC(ReasoningItem)

template <>
struct ormel::coding::RecordTable<ormel::TodoItem> {
  static constexpr auto fields =
      std::tuple(required<&TodoItem::text>("text"), required<&TodoItem::completed>("completed"));
};
ORMEL_DECLARE_CODEC(TodoItem)

template <>
struct ormel::coding::RecordTable<ormel::TodoListItem> {
  static constexpr auto fields = std::tuple(required<&TodoListItem::id>("id"), required<&TodoListItem::items>("items"));
};
ORMEL_DECLARE_CODEC(TodoListItem)
