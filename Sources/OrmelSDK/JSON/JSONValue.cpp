#include "OrmelSDK/JSON/JSONValue.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>

#include "OrmelSDK/Base/FatalError.h"
#include "OrmelSDK/JSON/JSONStorage.h"
#include "OrmelSDK/Text/UTF8.h"

namespace ormel {

namespace detail {

namespace {

void destroyElements(JSONStorageBlock& block) noexcept {
  auto* header = reinterpret_cast<JSONContainerHeader*>(block.payload());
  if (header->isObject) {
    std::destroy_n(membersOf(header), header->count);
  } else {
    std::destroy_n(elementsOf(header), header->count);
  }
}

std::uint32_t checkedCount(std::size_t count) {
  if (count > std::numeric_limits<std::uint32_t>::max())
    throw std::length_error("A JSON text or container is too large");
  return static_cast<std::uint32_t>(count);
}

std::uint16_t heightAbove(std::size_t tallestElement) {
  const std::size_t height = tallestElement + 1;
  if (height > JSONValue::maximumDepth) {
    throw EncodingError("JSON is nested deeper than " + std::to_string(JSONValue::maximumDepth) + " levels");
  }
  return static_cast<std::uint16_t>(height);
}

}  // namespace

std::byte* storeText(std::byte* place, std::string_view text) {
  const std::uint32_t size = checkedCount(text.size());
  std::memcpy(place, &size, sizeof size);
  if (size > 0) std::memcpy(place + sizeof size, text.data(), size);
  place[sizeof size + size] = std::byte{0};
  return place + textOverhead + size;
}

void releaseJSONBlock(const JSONBlock* block) noexcept {
  auto* storage = const_cast<JSONStorageBlock*>(static_cast<const JSONStorageBlock*>(block));
  if (storage->contents == JSONStorageBlock::Contents::container) destroyElements(*storage);
  delete[] reinterpret_cast<unsigned char*>(storage->adoptedTexts);
  storage->~JSONStorageBlock();
  ::operator delete(storage);
}

}  // namespace detail

using detail::JSONAccess;
using detail::JSONStorageBlock;

namespace {

JSONValue objectWithRepairedKeys(std::span<const JSONMemberInit> members) {
  JSONObjectBuilder builder;
  for (const auto& member : members) builder.set(member.key, member.value);
  return builder.build();
}

}  // namespace

JSONValue::JSONValue(std::string_view text) : JSONValue() {
  if (!isValidUTF8(text)) {
    *this = JSONValue(repairedUTF8(text));
    return;
  }
  auto* block = JSONStorageBlock::allocate(text.size() + detail::textOverhead + detail::textSlack,
                                           JSONStorageBlock::Contents::text);
  *this = JSONAccess::make(block->payload(), block, Kind::string);
  detail::storeText(block->payload(), text);
}

JSONValue JSONValue::object(std::initializer_list<JSONMemberInit> members) {
  return object(std::span<const JSONMemberInit>(members.begin(), members.size()));
}

JSONValue JSONValue::array(std::initializer_list<JSONValue> elements) {
  return array(std::span<const JSONValue>(elements.begin(), elements.size()));
}

JSONValue JSONValue::object(std::span<const JSONMemberInit> members) {
  const std::uint32_t count = detail::checkedCount(members.size());
  std::size_t textSize = 0;
  for (const auto& member : members) {
    if (!isValidUTF8(member.key)) return objectWithRepairedKeys(members);
    textSize += member.key.size() + detail::textOverhead;
  }
  const std::size_t elementsSize = detail::containerSize(count, true);
  auto* block =
      JSONStorageBlock::allocate(elementsSize + textSize + detail::textSlack, JSONStorageBlock::Contents::container);
  auto* header = JSONAccess::beginContainer(block->payload(), {.count = 0, .height = 1, .flags = 0, .isObject = true});
  JSONValue result = JSONAccess::make(header, block, Kind::object);

  std::byte* const firstText = block->payload() + elementsSize;
  std::byte* texts = firstText;
  auto* slots = detail::membersOf(header);
  for (const auto& member : members) {
    std::byte* const key = texts;
    texts = detail::storeText(texts, member.key);
    new (slots + header->count++) detail::JSONStoredMember{key, member.value};
  }
  detail::finishObject(header, {.stored = firstText, .readable = firstText}, detail::JSONElements::counted);
  header->height = detail::heightAbove(detail::tallestValue(*header));
  return result;
}

JSONValue JSONValue::array(std::span<const JSONValue> elements) {
  const std::uint32_t count = detail::checkedCount(elements.size());
  std::size_t tallest = 0;
  for (const auto& element : elements) tallest = std::max(tallest, JSONAccess::height(element));
  const std::uint16_t height = detail::heightAbove(tallest);
  auto* block = JSONStorageBlock::allocate(detail::containerSize(count, false), JSONStorageBlock::Contents::container);
  auto* header =
      JSONAccess::beginContainer(block->payload(), {.count = count, .height = height, .flags = 0, .isObject = false});
  std::uninitialized_copy(elements.begin(), elements.end(), detail::elementsOf(header));
  return JSONAccess::make(block->payload(), block, Kind::array);
}

const JSONObject* JSONValue::objectValue() const& noexcept {
  return kind() == Kind::object ? &JSONAccess::object(*this) : nullptr;
}

const JSONArray* JSONValue::arrayValue() const& noexcept {
  return kind() == Kind::array ? &JSONAccess::array(*this) : nullptr;
}

std::optional<std::int64_t> JSONValue::intValue() const noexcept {
  if (kind() != Kind::number) return std::nullopt;
  const double value = payload_.number;
  if (!(value == std::trunc(value))) return std::nullopt;
  if (!(value >= -0x1p63 && value < 0x1p63))
    detail::fatalError("a whole JSON number is outside the signed 64-bit range");
  return static_cast<std::int64_t>(value);
}

const JSONValue* JSONValue::find(std::string_view key) const& noexcept {
  return kind() == Kind::object ? JSONAccess::object(*this).find(key) : nullptr;
}

std::optional<std::int64_t> JSONValue::integerValue() const noexcept {
  if (kind() != Kind::number) return std::nullopt;
  const double value = payload_.number;
  if (!(value >= -0x1p63 && value < 0x1p63) || value != std::trunc(value)) return std::nullopt;
  return static_cast<std::int64_t>(value);
}

namespace {

/// Lives as long as the process: static objects of the application may still hold references to it at its end.
const JSONValue& absentValue() noexcept {
  alignas(JSONValue) static std::byte place[sizeof(JSONValue)];
  static const JSONValue& value = *new (place) JSONValue();
  return value;
}

}  // namespace

const JSONValue& JSONValue::operator[](std::string_view key) const& noexcept {
  const JSONValue* const value = find(key);
  return value ? *value : absentValue();
}

const JSONValue& JSONValue::element(std::size_t index) const noexcept {
  const JSONArray* const elements = arrayValue();
  return elements && index < elements->size() ? (*elements)[index] : absentValue();
}

JSONObjectBuilder& JSONObjectBuilder::set(std::string_view key, JSONValue value) {
  members_.emplace_back(repairedUTF8(key), std::move(value));
  return *this;
}

JSONValue JSONObjectBuilder::build() const {
  std::vector<JSONMemberInit> members;
  members.reserve(members_.size());
  for (const auto& [key, value] : members_) members.emplace_back(key, value);
  return JSONValue::object(members);
}

}  // namespace ormel
