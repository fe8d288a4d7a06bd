#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// The id of a request or of its response: an integer or a text.
///
/// The two forms never match each other: the integer 1 is not the text "1".
///
/// *Thread safety*: an immutable value.
class AppServerRequestID {
 public:
  enum class Kind { integer, string };

  static AppServerRequestID integer(std::int64_t value) { return AppServerRequestID(value); }
  static AppServerRequestID string(std::string value) { return AppServerRequestID(std::move(value)); }

  /// The id that a message carries: a whole number or a text, also an empty one. Any other value is no id. A whole
  /// number outside the signed 64-bit range ends the process, as in `JSONValue::intValue`.
  static std::optional<AppServerRequestID> fromJSONValue(const JSONValue& value);

  /// The form on the wire; an integer beyond 2^53 takes the nearest double.
  JSONValue jsonValue() const;

  Kind kind() const noexcept { return static_cast<Kind>(payload_.index()); }

  /// The number of an `integer`, else empty.
  std::optional<std::int64_t> integerValue() const noexcept;

  /// The text of a `string`, else null; valid as long as the id.
  const std::string* stringValue() const& noexcept { return std::get_if<std::string>(&payload_); }
  const std::string* stringValue() && = delete;

  friend bool operator==(const AppServerRequestID&, const AppServerRequestID&) noexcept = default;

 private:
  explicit AppServerRequestID(std::int64_t value) : payload_(value) {}
  explicit AppServerRequestID(std::string value) : payload_(std::move(value)) {}

  friend struct std::hash<AppServerRequestID>;

  std::variant<std::int64_t, std::string> payload_;
};

}  // namespace ormel

/// Equal ids hash alike; the two forms are kept apart.
template <>
struct std::hash<ormel::AppServerRequestID> {
  std::size_t operator()(const ormel::AppServerRequestID& id) const noexcept;
};
