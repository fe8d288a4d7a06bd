#pragma once

#include <string_view>

#include "OrmelSDK/JSON/CodingErrors.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// Reads a record, variant or enumeration of this library from its JSON form.
///
/// Every type that the server sends has one: items, events, replies, and the records, variants and enumerations in
/// them. Types that an application only sends or is only asked about have none, as their headers say; a call with such
/// a type does not link. Keys that the type does not know are ignored. Fails with `DecodingError`, whose context names
/// the path to the failing value. Thread-safe.
template <typename Record>
Record decode(const JSONValue& value);

/// Writes a record, variant or enumeration of this library in its JSON form. Fails with `EncodingError`.
template <typename Record>
JSONValue encode(const Record& record);

/// The wire word of an enumeration's case; valid for ever.
template <typename Enumeration>
std::string_view rawValue(Enumeration value);

}  // namespace ormel
