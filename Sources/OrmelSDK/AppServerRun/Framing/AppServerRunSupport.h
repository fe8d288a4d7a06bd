#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "OrmelSDK/JSON/CodingErrors.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// Reads the JSON text of one line. Fails as `JSONValue::decode`.
JSONValue decodeJSONValue(std::string_view from);

/// One sentence that says what is wrong with a message of the server: names the place and the kind of a
/// `DecodingError`, and is the error's own description for any other.
std::string appServerProtocolErrorDescription(const std::exception& error);

/// The sentence for a decoding failure: `kind` says what is wrong, `context` where and why.
std::string decodingErrorDescription(std::string_view kind, const DecodingContext& context);

/// Whether an error that the server answered with means that it does not know the method.
bool isUnknownMethodCompatibilityError(std::int64_t code, std::string_view message);

}  // namespace ormel::detail
