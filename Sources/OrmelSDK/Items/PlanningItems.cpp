#include "OrmelSDK/Items/PlanningItems.h"

#include <string_view>

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Items/PlanningItemsTables.h"

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

ORMEL_DEFINE_RECORD(PlanItem)
ORMEL_DEFINE_RECORD(ReasoningItem)
ORMEL_DEFINE_RECORD(TodoItem)
ORMEL_DEFINE_RECORD(TodoListItem)
