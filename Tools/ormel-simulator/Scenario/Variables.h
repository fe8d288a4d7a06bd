#pragma once

#include <map>
#include <string>
#include <string_view>

#include "OrmelSDK/Base/Error.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::simulator {

/// A variable was used before anything was captured under its name.
class UnsetVariable : public Error {
 public:
  explicit UnsetVariable(std::string_view name)
      : Error("nothing has been captured as \"" + std::string(name) + "\" so far") {}
};

/// The values that a conversation has captured so far.
class Variables {
 public:
  void set(std::string_view name, JSONValue value) { values_.insert_or_assign(std::string(name), std::move(value)); }

  /// Fails with `UnsetVariable`.
  const JSONValue& get(std::string_view name) const;

  /// The payload with each variable replaced by its value. Fails with `UnsetVariable`.
  JSONValue filledIn(const JSONValue& payload) const;

  /// The text with each `${name}` replaced: a text goes in as it is, any other value as JSON.
  std::string filledInText(std::string_view text) const;

 private:
  JSONValue filledInString(std::string_view text) const;

  std::map<std::string, JSONValue, std::less<>> values_;
};

}  // namespace ormel::simulator
