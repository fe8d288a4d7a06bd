#pragma once

// Reading the members of an object field by field. Each reader tries the keys in the order given, and a later key when
// the earlier one is missing or has a value of another type: a JSON null is as good as missing, except where any value
// will do.

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/CodingErrors.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

using JSONKeys = std::initializer_list<std::string_view>;

/// Applies `read`, which returns an optional or a pointer, to the values under `keys` in turn; returns the first result
/// that is not empty.
template <typename Read>
auto firstMember(const JSONObject& object, JSONKeys keys, const Read& read)
    -> std::invoke_result_t<const Read&, const JSONValue&> {
  for (const std::string_view key : keys) {
    const JSONValue* value = object.find(key);
    if (!value) continue;
    if (auto found = std::invoke(read, *value)) return found;
  }
  return {};
}

/// The value itself, a JSON null included.
const JSONValue* valueMember(const JSONObject& object, JSONKeys keys);
const JSONObject* objectMember(const JSONObject& object, JSONKeys keys);
const JSONArray* arrayMember(const JSONObject& object, JSONKeys keys);
/// A view into the object.
std::optional<std::string_view> textViewMember(const JSONObject& object, JSONKeys keys);
std::optional<bool> booleanMember(const JSONObject& object, JSONKeys keys);
/// A number with no fraction. One outside the signed 64-bit range ends the process, as in `JSONValue::intValue`.
std::optional<std::int64_t> integerMember(const JSONObject& object, JSONKeys keys);

/// The same, to be kept beyond the object's message.
std::optional<JSONValue> ownedValueMember(const JSONObject& object, JSONKeys keys);
std::optional<std::string> textMember(const JSONObject& object, JSONKeys keys);
std::string textMember(const JSONObject& object, JSONKeys keys, std::string_view fallback);

/// The non-empty results of `read`, which returns an optional, over the elements; none for a null array.
template <typename Read>
auto listOf(const JSONArray* array, const Read& read) {
  std::vector<typename std::invoke_result_t<const Read&, const JSONValue&>::value_type> list;
  if (!array) return list;
  list.reserve(array->size());
  for (const JSONValue& element : *array) {
    if (auto item = std::invoke(read, element)) list.push_back(*std::move(item));
  }
  return list;
}

/// The texts among the elements.
template <typename Text = std::string>
std::vector<Text> textsOf(const JSONArray* array) {
  return listOf(array, [](const JSONValue& element) -> std::optional<Text> {
    const auto text = element.stringValue();
    return text ? std::optional<Text>(*text) : std::nullopt;
  });
}

/// All elements, each to be kept beyond the array's message.
std::vector<JSONValue> valuesOf(const JSONArray* array);

/// The record in its own JSON form, or nothing if the value does not decode.
template <typename Record>
std::optional<Record> decodeIfPossible(const JSONValue& value) {
  try {
    return decode<Record>(value);
  } catch (const DecodingError&) {
    return std::nullopt;
  }
}

}  // namespace ormel::detail
