#include <algorithm>

#include "OrmelSDK/JSON/JSONStorage.h"
#include "OrmelSDK/Text/CanonicalText.h"

namespace ormel {

namespace {

bool equalArrays(const JSONArray& left, const JSONArray& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end());
}

// Keys are unique on both sides, so equal sizes and every member found make equal key sets.
bool equalObjects(const JSONObject& left, const JSONObject& right) {
  if (left.size() != right.size()) return false;
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
