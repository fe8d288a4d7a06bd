#include "OrmelSDK/AppServerRun/JSONFields.h"

#include "OrmelSDK/Coding/KeptValue.h"

namespace ormel::detail {

const JSONValue* valueUnder(const JSONObject& object, JSONKeys keys) {
  return firstUnder(object, keys, [](const JSONValue& value) { return &value; });
}

const JSONObject* objectUnder(const JSONObject& object, JSONKeys keys) {
  return firstUnder(object, keys, [](const JSONValue& value) { return value.objectValue(); });
}

const JSONArray* arrayUnder(const JSONObject& object, JSONKeys keys) {
  return firstUnder(object, keys, [](const JSONValue& value) { return value.arrayValue(); });
}

std::optional<std::string_view> textUnder(const JSONObject& object, JSONKeys keys) {
  return firstUnder(object, keys, [](const JSONValue& value) { return value.stringValue(); });
}

std::optional<bool> booleanUnder(const JSONObject& object, JSONKeys keys) {
  return firstUnder(object, keys, &JSONValue::boolValue);
}

std::optional<std::int64_t> integerUnder(const JSONObject& object, JSONKeys keys) {
  return firstUnder(object, keys, &JSONValue::intValue);
}

std::optional<JSONValue> ownValueUnder(const JSONObject& object, JSONKeys keys) {
  const JSONValue* value = valueUnder(object, keys);
  return value ? std::optional(coding::kept(*value)) : std::nullopt;
}

std::optional<std::string> ownTextUnder(const JSONObject& object, JSONKeys keys) {
  const auto text = textUnder(object, keys);
  return text ? std::optional<std::string>(*text) : std::nullopt;
}

std::string ownTextUnder(const JSONObject& object, JSONKeys keys, std::string_view fallback) {
  return std::string(textUnder(object, keys).value_or(fallback));
}

std::vector<JSONValue> valuesOf(const JSONArray* array) {
  return listOf(array, [](const JSONValue& element) { return std::optional(coding::kept(element)); });
}

}  // namespace ormel::detail
