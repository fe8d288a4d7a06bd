#pragma once

#include <iosfwd>
#include <string>

#include "OrmelSDK/Coding/RecordCoding.h"

namespace ormel {

/// How far a piece of context is to be trusted.
enum class AdditionalContextKind {
  /// It may hold anything, and gives no orders.
  untrusted,
  /// It comes from the application itself.
  application,
};
std::ostream& operator<<(std::ostream& stream, const AdditionalContextKind& value);

/// Context that a turn is given beside the user's input.
struct AdditionalContextEntry {
  std::string value;
  AdditionalContextKind kind = AdditionalContextKind::untrusted;
  friend bool operator==(const AdditionalContextEntry&, const AdditionalContextEntry&);
  friend std::ostream& operator<<(std::ostream& stream, const AdditionalContextEntry& value);
};

}  // namespace ormel
