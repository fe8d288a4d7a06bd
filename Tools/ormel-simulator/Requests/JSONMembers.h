#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::simulator {

/// The text under the key, if there is one.
inline std::optional<std::string> textMember(const JSONValue& object, std::string_view key) {
  const JSONValue* member = object.find(key);
  const auto text = member ? member->stringValue() : std::nullopt;
  return text ? std::optional<std::string>(*text) : std::nullopt;
}

inline double numberMember(const JSONValue& object, std::string_view key) {
  const JSONValue* member = object.find(key);
  return member ? member->numberValue().value_or(0) : 0;
}

inline bool flagMember(const JSONValue& object, std::string_view key) {
  const JSONValue* member = object.find(key);
  return member && member->boolValue().value_or(false);
}

/// The value under the key, or null.
inline JSONValue anyMember(const JSONValue& object, std::string_view key) {
  const JSONValue* member = object.find(key);
  return member ? *member : JSONValue();
}

inline JSONValue textOrNull(const std::optional<std::string>& text) { return text ? JSONValue(*text) : JSONValue(); }

}  // namespace ormel::simulator
