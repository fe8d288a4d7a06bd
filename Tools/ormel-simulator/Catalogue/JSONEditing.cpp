#include "ormel-simulator/Catalogue/JSONEditing.h"

#include <algorithm>

#include "ormel-simulator/Requests/JSONMembers.h"

namespace ormel::simulator {

namespace {

JSONObjectBuilder membersBut(const JSONValue& object, std::string_view left) {
  JSONObjectBuilder members;
  if (const auto* old = object.objectValue()) {
    for (const auto& [key, value] : *old) {
      if (key != left) members.set(key, value);
    }
  }
  return members;
}

}  // namespace

JSONValue valueAt(const JSONValue& root, std::span<const std::string> path) {
  JSONValue value = root;
  for (const std::string& key : path) value = anyMember(value, key);
  return value;
}

JSONValue withValueAt(const JSONValue& root, std::span<const std::string> path, const JSONValue& value) {
  if (path.empty()) return value;
  JSONObjectBuilder members = membersBut(root, path.front());
  const JSONValue changed = withValueAt(anyMember(root, path.front()), path.subspan(1), value);
  if (!changed.isNull()) members.set(path.front(), changed);
  return members.build();
}

JSONValue with(const JSONValue& object, std::string_view key, const JSONValue& value) {
  return membersBut(object, key).set(key, value).build();
}

JSONValue merged(const JSONValue& base, const JSONValue& added) {
  const auto* members = added.objectValue();
  if (!members) return added;
  JSONValue result = base.objectValue() ? base : JSONValue::object();
  for (const auto& [key, value] : *members) {
    const std::string path[] = {std::string(key)};
    result = withValueAt(result, path, merged(anyMember(result, key), value));
  }
  return result;
}

std::vector<JSONValue> elementsOf(const JSONValue& array) {
  const auto* elements = array.arrayValue();
  return elements ? std::vector<JSONValue>(elements->begin(), elements->end()) : std::vector<JSONValue>();
}

std::vector<std::string> keysOf(const JSONValue& object) {
  std::vector<std::string> keys;
  if (const auto* members = object.objectValue()) {
    for (const auto& [key, value] : *members) keys.emplace_back(key);
  }
  std::sort(keys.begin(), keys.end());
  return keys;
}

bool holdsText(const JSONValue& array, std::string_view text) {
  const auto* elements = array.arrayValue();
  return elements && std::any_of(elements->begin(), elements->end(),
                                 [&](const JSONValue& element) { return element.stringValue() == text; });
}

JSONValue textsJSON(std::span<const std::string> texts) {
  std::vector<JSONValue> elements(texts.begin(), texts.end());
  return JSONValue::array(elements);
}

}  // namespace ormel::simulator
