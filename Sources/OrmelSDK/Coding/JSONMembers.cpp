#include "OrmelSDK/Coding/JSONMembers.h"

#include "OrmelSDK/Coding/KeptValue.h"

namespace ormel::detail {

const JSONValue* valueMember(const JSONObject& object, JSONKeys keys) {
  return firstMember(object, keys, [](const JSONValue& value) { return &value; });
}

const JSONObject* objectMember(const JSONObject& object, JSONKeys keys) {
  return firstMember(object, keys, [](const JSONValue& value) { return value.objectValue(); });
}

const JSONArray* arrayMember(const JSONObject& object, JSONKeys keys) {
  return firstMember(object, keys, [](const JSONValue& value) { return value.arrayValue(); });
}

std::optional<std::string_view> textViewMember(const JSONObject& object, JSONKeys keys) {
  return firstMember(object, keys, [](const JSONValue& value) { return value.stringValue(); });
}

std::optional<bool> booleanMember(const JSONObject& object, JSONKeys keys) {
  return firstMember(object, keys, &JSONValue::boolValue);
}

std::optional<std::int64_t> integerMember(const JSONObject& object, JSONKeys keys) {
  return firstMember(object, keys, &JSONValue::intValue);
}

std::optional<JSONValue> ownedValueMember(const JSONObject& object, JSONKeys keys) {
  const JSONValue* value = valueMember(object, keys);
  return value ? std::optional(coding::kept(*value)) : std::nullopt;
}

std::optional<std::string> textMember(const JSONObject& object, JSONKeys keys) {
  const auto text = textViewMember(object, keys);
  return text ? std::optional<std::string>(*text) : std::nullopt;
}

std::string textMember(const JSONObject& object, JSONKeys keys, std::string_view fallback) {
  return std::string(textViewMember(object, keys).value_or(fallback));
}

std::vector<JSONValue> valuesOf(const JSONArray* array) {
  return listOf(array, [](const JSONValue& element) { return std::optional(coding::kept(element)); });
}

}  // namespace ormel::detail
