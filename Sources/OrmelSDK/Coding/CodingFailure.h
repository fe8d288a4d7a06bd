#pragma once

#include <string>
#include <string_view>

#include "OrmelSDK/Coding/CodingPath.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::coding {

/// The failures of decoding, each thrown as a `DecodingError` with the path that led there.

[[noreturn]] void failTypeMismatch(std::string_view wantedType, const JSONValue& found, const CodingPath& path);
[[noreturn]] void failNullValue(std::string_view wantedType, const CodingPath& path);
[[noreturn]] void failMissingKey(std::string_view key, const CodingPath& path);
[[noreturn]] void failCorrupted(std::string description, const CodingPath& path);

/// A value of another type than wanted: JSON null is a missing value, anything else a mismatch.
[[noreturn]] void failUnexpected(std::string_view wantedType, const JSONValue& found, const CodingPath& path);

}  // namespace ormel::coding
