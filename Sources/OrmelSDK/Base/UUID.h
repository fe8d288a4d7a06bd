#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <iosfwd>
#include <string>

namespace ormel {

/// A universally unique identifier.
///
/// *Thread safety*: a plain value; `random` may be called from any thread.
struct UUID {
  /// All zero, unless made by `random`.
  std::array<std::uint8_t, 16> bytes{};

  /// A new one, made of random bits.
  static UUID random();

  /// The usual form of 36 characters, with upper-case digits.
  std::string text() const;

  friend bool operator==(const UUID&, const UUID&) = default;
  friend auto operator<=>(const UUID&, const UUID&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const UUID& value);
};

}  // namespace ormel
