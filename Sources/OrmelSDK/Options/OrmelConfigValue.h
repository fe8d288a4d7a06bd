#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace ormel {

/// A value of the server's configuration. There is no null.
///
/// Texts, numbers and booleans convert on their own:
///
///     options.config = OrmelConfigValue::Object{
///         {"model", "large"},
///         {"tools", OrmelConfigValue::object({{"search", true}, {"limits", OrmelConfigValue::array({1, 2.5})}})},
///     };
///
/// *Thread safety*: an immutable value; copying an object copies none of its members.
class OrmelConfigValue {
 public:
  /// The six cases of a value.
  enum class Kind { string, integer, double_, bool_, array, object };

  using Array = std::vector<OrmelConfigValue>;
  using Object = std::map<std::string, OrmelConfigValue>;

  // Copying and moving a variant is much code; it is compiled once, not in every file that does it.
  OrmelConfigValue(const OrmelConfigValue& other);
  OrmelConfigValue(OrmelConfigValue&& other) noexcept;
  OrmelConfigValue& operator=(const OrmelConfigValue& other);
  OrmelConfigValue& operator=(OrmelConfigValue&& other) noexcept;
  ~OrmelConfigValue();

  OrmelConfigValue(std::string value);
  OrmelConfigValue(std::string_view value);
  OrmelConfigValue(const char* value);
  OrmelConfigValue(std::nullptr_t) = delete;

  /// Constructs an `integer` from any integer type whose values all fit into a signed 64-bit integer.
  template <std::integral Integer>
    requires(!std::same_as<Integer, bool> && !std::same_as<Integer, char> &&
             std::numeric_limits<Integer>::digits <= std::numeric_limits<std::int64_t>::digits)
  OrmelConfigValue(Integer value) : payload_(static_cast<std::int64_t>(value)) {}

  template <std::floating_point Number>
  OrmelConfigValue(Number value) : payload_(static_cast<double>(value)) {}

  template <std::same_as<bool> Bool>
  OrmelConfigValue(Bool value) : payload_(value) {}

  static OrmelConfigValue array(Array elements);
  static OrmelConfigValue object(Object members);

  Kind kind() const noexcept { return static_cast<Kind>(payload_.index()); }

  /// The payload if the value is of that case, else null; valid as long as the value.
  const std::string* stringValue() const& noexcept { return std::get_if<std::string>(&payload_); }
  const std::int64_t* integerValue() const& noexcept { return std::get_if<std::int64_t>(&payload_); }
  const double* doubleValue() const& noexcept { return std::get_if<double>(&payload_); }
  const bool* boolValue() const& noexcept { return std::get_if<bool>(&payload_); }
  const Array* arrayValue() const& noexcept { return std::get_if<Array>(&payload_); }
  const Object* objectValue() const& noexcept {
    const auto* members = std::get_if<SharedObject>(&payload_);
    return members ? members->get() : nullptr;
  }
  const std::string* stringValue() && = delete;
  const std::int64_t* integerValue() && = delete;
  const double* doubleValue() && = delete;
  const bool* boolValue() && = delete;
  const Array* arrayValue() && = delete;
  const Object* objectValue() && = delete;

  /// Compares the case and the payload: the integer 1 is not the double 1.0.
  friend bool operator==(const OrmelConfigValue& left, const OrmelConfigValue& right);

 private:
  // A map cannot hold the type that is being defined; the pointer can, and makes a copy cheap.
  using SharedObject = std::shared_ptr<const Object>;
  using Payload = std::variant<std::string, std::int64_t, double, bool, Array, SharedObject>;

  explicit OrmelConfigValue(Payload payload);

  Payload payload_;
};

}  // namespace ormel
