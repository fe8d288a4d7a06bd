#pragma once

#include <concepts>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "OrmelSDK/AppServerRun/Launch/AppServerLaunch.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Coding/Update.h"
#include "OrmelSDK/Input/ApprovalMode.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Options/OrmelConfigValue.h"

namespace ormel::detail {

// How an argument goes out.

inline JSONValue paramValue(const JSONValue& value) { return value; }
inline JSONValue paramValue(const std::string& value) { return value; }
inline JSONValue paramValue(const std::map<std::string, OrmelConfigValue>& value) {
  return configValueToJSONValue(OrmelConfigValue::object(value));
}
/// The server does not know every policy by the word of its case.
inline JSONValue paramValue(const ApprovalMode& value) { return value.jsonValue(); }
template <typename Number>
  requires(std::is_arithmetic_v<Number>)
JSONValue paramValue(Number value) {
  return value;
}
template <typename Value>
  requires(!std::is_arithmetic_v<Value>)
JSONValue paramValue(const Value& value) {
  return encode(value);
}
template <typename Element>
JSONValue paramValue(const std::vector<Element>& values) {
  std::vector<JSONValue> elements;
  for (const Element& value : values) elements.push_back(paramValue(value));
  return JSONValue::array(elements);
}

/// The params of a call as they are put together. Each way in which a member goes out has a name of its own.
class ParamsObject {
 public:
  template <typename Value>
  ParamsObject& always(std::string_view key, const Value& value) {
    members_.set(key, paramValue(value));
    return *this;
  }

  /// No member without a value; an empty value is one.
  template <typename Value>
  ParamsObject& ifGiven(std::string_view key, const std::optional<Value>& value) {
    return value ? always(key, *value) : *this;
  }

  /// No member unless the flag is set.
  ParamsObject& ifTrue(std::string_view key, bool flag) { return flag ? always(key, true) : *this; }

  /// JSON null without a value.
  template <typename Value>
  ParamsObject& nullWhenEmpty(std::string_view key, const std::optional<Value>& value) {
    return value ? always(key, *value) : always(key, JSONValue());
  }

  /// No member if unchanged, JSON null if cleared.
  template <typename Value>
  ParamsObject& update(std::string_view key, const Update<Value>& value) {
    return value.kind() == Update<Value>::Kind::clear ? always(key, JSONValue()) : ifGiven(key, value.newValue());
  }

  JSONValue build() const { return members_.build(); }

 private:
  JSONObjectBuilder members_;
};

}  // namespace ormel::detail
