#include <algorithm>
#include <cstdint>

#include "OrmelSDK/JSON/JSONStorage.h"
#include "OrmelSDK/Text/CanonicalText.h"

namespace ormel {

namespace {

bool equalArrays(const JSONArray& left, const JSONArray& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end());
}

// Both indexes list unique keys in one canonical order, so equal objects agree position by position. Searching instead
// would bring some twenty keys into canonical form for each member.
bool equalIndexedObjects(const JSONObject& left, const std::uint32_t* leftIndex, const JSONObject& right,
                         const std::uint32_t* rightIndex) {
  const auto* const leftMembers = detail::JSONAccess::members(left);
  const auto* const rightMembers = detail::JSONAccess::members(right);
  return std::equal(leftIndex, leftIndex + left.size(), rightIndex, [&](std::uint32_t leftAt, std::uint32_t rightAt) {
    const auto& one = leftMembers[leftAt];
    const auto& other = rightMembers[rightAt];
    return detail::canonicallyEquivalent(detail::storedText(one.key), detail::storedText(other.key)) &&
           one.value == other.value;
  });
}

// Keys are unique on both sides, so equal sizes and every member found make equal key sets.
bool equalObjects(const JSONObject& left, const JSONObject& right) {
  if (left.size() != right.size()) return false;
  const auto* const leftIndex = detail::JSONAccess::index(left);
  const auto* const rightIndex = detail::JSONAccess::index(right);
  if (leftIndex && rightIndex) return equalIndexedObjects(left, leftIndex, right, rightIndex);
  return std::all_of(left.begin(), left.end(), [&](const JSONMember& member) {
    const auto* other = right.find(member.key);
    return other && *other == member.value;
  });
}

}  // namespace

bool operator==(const JSONValue& left, const JSONValue& right) {
  using detail::JSONAccess;
  if (left.kind() != right.kind()) return false;
  switch (left.kind()) {
    case JSONValue::Kind::string:
      return detail::canonicallyEquivalent(*left.stringValue(), *right.stringValue());
    case JSONValue::Kind::number:
      return *left.numberValue() == *right.numberValue();
    case JSONValue::Kind::bool_:
      return *left.boolValue() == *right.boolValue();
    case JSONValue::Kind::object:
      return equalObjects(JSONAccess::object(left), JSONAccess::object(right));
    case JSONValue::Kind::array:
      return equalArrays(JSONAccess::array(left), JSONAccess::array(right));
    case JSONValue::Kind::null:
      return true;
  }
  return false;
}

}  // namespace ormel
