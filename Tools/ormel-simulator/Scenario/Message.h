#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::simulator {

/// Whether the value is a number without a fraction.
bool isWholeNumber(const JSONValue& value);

/// One line of the client, taken apart.
struct Message {
  enum class Kind { request, notification, answer, errorAnswer, malformed };

  Kind kind = Kind::malformed;
  /// The line as it came.
  std::string line;
  /// The whole message, if the line is JSON.
  std::optional<JSONValue> whole;
  std::string method;
  JSONValue id;
  /// The params, the result or the error.
  std::optional<JSONValue> content;
  /// Why the message is malformed.
  std::string fault;
};

/// Tells what kind of message the line is. A well-formed one has the members of its kind and no other.
Message readMessage(std::string line);

}  // namespace ormel::simulator
