#include <algorithm>
#include <cstdint>
#include <cstring>

#include "OrmelSDK/JSON/JSONStorage.h"

namespace ormel {

namespace {

using detail::JSONAccess;
using detail::JSONContainerHeader;
using detail::JSONStorageBlock;

// Copies a value of any storage into one message block of exactly its size.
class Detacher {
 public:
  JSONValue detach(const JSONValue& value) {
    measure(value);
    auto* block =
        JSONStorageBlock::allocate(nodesSize_ + textsSize_ + detail::textSlack, JSONStorageBlock::Contents::message);
    block_ = block;
    nodes_ = block->payload();
    texts_ = nodes_ + nodesSize_;
    return copy(value);
  }

 private:
  void measure(const JSONValue& value) {
    if (const auto text = value.stringValue()) {
      textsSize_ += text->size() + detail::textOverhead;
    } else if (const auto* array = value.arrayValue()) {
      nodesSize_ += detail::containerSize(array->size(), false);
      for (const auto& element : *array) measure(element);
    } else if (const auto* object = value.objectValue()) {
      nodesSize_ += detail::containerSize(object->size(), true);
      for (const auto& [key, member] : *object) {
        textsSize_ += key.size() + detail::textOverhead;
        measure(member);
      }
    }
  }

  JSONValue copy(const JSONValue& value) {
    if (value.stringValue()) return JSONAccess::make(copyText(JSONAccess::data(value)), block_, value.kind());
    if (!JSONAccess::isContainer(value)) return value;
    const auto& source = JSONAccess::header(value);
    auto* header = JSONAccess::beginContainer(nodes_, source);
    nodes_ += detail::containerSize(source.count, source.isObject);
    if (source.isObject) {
      copyMembers(*header, JSONAccess::members(JSONAccess::object(value)));
    } else {
      auto* slot = detail::elementsOf(header);
      for (const auto& element : JSONAccess::array(value)) new (slot++) JSONValue(copy(element));
    }
    return JSONAccess::make(header, block_, value.kind());
  }

  void copyMembers(JSONContainerHeader& header, const detail::JSONStoredMember* source) {
    auto* slot = detail::membersOf(&header);
    for (const auto* member = source; member != source + header.count; ++member, ++slot) {
      slot->key = copyText(member->key);
      new (&slot->value) JSONValue(copy(member->value));
    }
    if (!(header.flags & JSONContainerHeader::hasIndex)) return;
    const auto* index = reinterpret_cast<const std::uint32_t*>(source + header.count);
    std::copy_n(index, header.count, reinterpret_cast<std::uint32_t*>(slot));
  }

  const std::byte* copyText(const std::byte* text) {
    const std::size_t size = detail::storedText(text).size() + detail::textOverhead;
    std::memcpy(texts_, text, size);
    std::byte* const copied = texts_;
    texts_ += size;
    return copied;
  }

  const JSONStorageBlock* block_ = nullptr;
  std::byte* nodes_ = nullptr;
  std::byte* texts_ = nullptr;
  std::size_t nodesSize_ = 0;
  std::size_t textsSize_ = 0;
};

}  // namespace

JSONValue JSONValue::detached() const {
  if (kind() != Kind::string && !JSONAccess::isContainer(*this)) return *this;
  return Detacher().detach(*this);
}

}  // namespace ormel
