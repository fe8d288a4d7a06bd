#include "OrmelSDK/Items/PlanningItems.h"

#include <string_view>

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Coding/SharedTextCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::PlanItem> {
  static constexpr Field fields[] = {
      required<&PlanItem::id>("id"),
      required<&PlanItem::text>("text"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ReasoningItem> {
  static constexpr std::string_view writtenType = "reasoning";
  static constexpr Field fields[] = {
      required<&ReasoningItem::id>("id"),
      defaulted<&ReasoningItem::summary>("summary"),
      defaulted<&ReasoningItem::content>("content"),
  };
  static void finish(ReasoningItem& item, const JSONObject& object, const CodingPath& path);
};

template <>
struct ormel::coding::RecordTable<ormel::TodoItem> {
  static constexpr Field fields[] = {
      required<&TodoItem::text>("text"),
      required<&TodoItem::completed>("completed"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::TodoListItem> {
  static constexpr Field fields[] = {
      required<&TodoListItem::id>("id"),
      required<&TodoListItem::items>("items"),
  };
};

namespace ormel {

SharedText ReasoningItem::text() const {
  SharedText joined;
  bool isFirst = true;
  for (const auto* texts : {&summary, &content}) {
    for (const SharedText& text : *texts) {
      if (isFirst) {
        joined = text;
      } else {
        joined.append("\n");
        joined.append(text);
      }
      isFirst = false;
    }
  }
  return joined;
}

}  // namespace ormel

namespace ormel::coding {

void RecordTable<ReasoningItem>::finish(ReasoningItem& item, const JSONObject& object, const CodingPath& path) {
  constexpr std::string_view key = "text";
  if (!item.summary.empty() || !item.content.empty()) return;
  if (hasValue(object, "summary") || hasValue(object, "content") || !hasValue(object, key)) return;
  auto text = decodeAs<SharedText>(*object.find(key), path.at(key));
  if (!text.empty()) item.content.push_back(std::move(text));
}

}  // namespace ormel::coding

ORMEL_DEFINE_HOT_RECORD(PlanItem)
ORMEL_DEFINE_HOT_RECORD(ReasoningItem)
ORMEL_DEFINE_HOT_RECORD(TodoItem)
ORMEL_DEFINE_HOT_RECORD(TodoListItem)
