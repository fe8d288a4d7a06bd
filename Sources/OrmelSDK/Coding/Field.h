#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "OrmelSDK/Coding/CodingPath.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::coding {

/// How a field is read when its value is absent. JSON null is as good as absent, except that a required field whose
/// type takes null reads it.
enum class Presence : std::uint8_t {
  /// Fails with a missing-key error that names the last key tried.
  required,
  /// The field is a `std::optional`, empty when no key has a value.
  optional,
  /// Keeps the record's own initial value when no key has a value.
  defaulted,
  /// The record is only written.
  unread,
};

/// How a field with an empty value is written. Empty are an optional or an update without a value, false, and a list or
/// text without elements.
enum class WhenEmpty : std::uint8_t { written, omitted, null };

/// Reads and writes values of one type, whatever it is.
struct ValueCoder {
  /// Null for a field that is only written.
  void (*decodeInto)(void* into, const JSONValue& value, const CodingPath& path);
  /// Not called for an optional without a value.
  JSONValue (*encode)(const void* value);
  bool (*isEmpty)(const void* value) noexcept;
};

/// Identifies a record in a table by its address.
template <typename Record>
inline constexpr char recordIdentity = 0;

/// One field of a record, as its table tells it.
struct Field {
  static constexpr std::size_t mostKeys = 3;

  /// The keys of the field, in the order in which they are tried.
  std::array<std::string_view, mostKeys> keys;
  std::uint8_t keyCount;
  Presence presence;
  WhenEmpty whenEmpty;
  std::string_view writtenKey;
  /// Where in a record the field's value lies.
  void* (*place)(void* record) noexcept;
  const ValueCoder* coder;
  /// The record that the field belongs to.
  const char* record;

  const void* placeIn(const void* from) const noexcept { return place(const_cast<void*>(from)); }
  bool isEmptyIn(const void* from) const noexcept { return coder->isEmpty(placeIn(from)); }
  JSONValue encodedFrom(const void* from) const { return coder->encode(placeIn(from)); }
};

}  // namespace ormel::coding
