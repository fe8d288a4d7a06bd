#include "OrmelSDK/Items/ThreadItem.h"

#include <string>

#include "OrmelSDK/Items/ThreadItemTables.h"

namespace ormel {

ThreadItem::ThreadItem() = default;
ThreadItem::ThreadItem(const ThreadItem&) = default;
ThreadItem::ThreadItem(ThreadItem&&) noexcept = default;
ThreadItem& ThreadItem::operator=(const ThreadItem&) = default;
ThreadItem& ThreadItem::operator=(ThreadItem&&) noexcept = default;
ThreadItem::~ThreadItem() = default;

const std::string& ThreadItem::id() const {
  return visit(*this, [](const auto& item) -> const std::string& { return item.id; });
}

std::optional<SharedText> ThreadItem::agentMessageText() const {
  const auto* message = std::get_if<AgentMessageItem>(&value);
  if (!message) return std::nullopt;
  return message->text;
}

}  // namespace ormel

namespace ormel::coding {

ThreadItem VariantTable<ThreadItem>::decodeUnknown(std::string_view type, const JSONValue& value,
                                                   const CodingPath& path) {
  const JSONValue* id = value.find("id");
  if (!id || !id->stringValue()) failCorrupted("Unknown item type: " + std::string(type), path.at("type"));
  return decodeAs<UnknownThreadItem>(value, path);
}

JSONValue VariantTable<ThreadItem>::encodeUnknown(const ThreadItem& item) {
  return Codec<UnknownThreadItem>::encode(std::get<UnknownThreadItem>(item.value));
}

}  // namespace ormel::coding

ORMEL_DEFINE_VARIANT(ThreadItem)
