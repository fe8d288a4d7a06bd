#include "OrmelSDK/Coding/KeptValue.h"

#include <algorithm>
#include <cstddef>

#include "OrmelSDK/JSON/JSONStorage.h"

namespace ormel::coding {

namespace {

using detail::JSONAccess;
using detail::JSONStorageBlock;

/// A message up to this size, in bytes, is held whole without asking.
constexpr std::size_t smallMessage = 4096;

/// A part is copied out if its message is at least as many times larger.
constexpr std::size_t muchLarger = 8;

/// Takes the memory of a value off what is left; false as soon as that is not enough.
bool fits(const JSONValue& value, std::size_t& left) {
  const auto take = [&left](std::size_t size) {
    const bool isEnough = size <= left;
    left -= std::min(size, left);
    return isEnough;
  };
  const auto textSize = [](std::string_view text) { return text.size() + detail::textOverhead; };
  if (const auto text = value.stringValue()) return take(textSize(*text));
  if (!JSONAccess::isContainer(value)) return true;
  const auto& header = JSONAccess::header(value);
  if (!take(detail::containerSize(header.count, header.isObject))) return false;
  if (header.isObject) {
    const auto& object = JSONAccess::object(value);
    return std::all_of(object.begin(), object.end(), [&](const JSONMember& member) {
      return take(textSize(member.key)) && fits(member.value, left);
    });
  }
  const auto& array = JSONAccess::array(value);
  return std::all_of(array.begin(), array.end(), [&](const JSONValue& element) { return fits(element, left); });
}

bool isSmallPartOf(const JSONStorageBlock& block, const JSONValue& value) {
  std::size_t left = block.size / muchLarger;
  return fits(value, left);
}

}  // namespace

JSONValue kept(const JSONValue& value) {
  const auto* block = static_cast<const JSONStorageBlock*>(JSONAccess::owner(value));
  const bool isLargeMessage =
      block && block->contents == JSONStorageBlock::Contents::message && block->size > smallMessage;
  return isLargeMessage && isSmallPartOf(*block, value) ? value.detached() : value;
}

}  // namespace ormel::coding
