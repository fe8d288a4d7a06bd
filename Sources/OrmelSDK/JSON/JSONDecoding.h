#pragma once

#include <cstddef>
#include <string_view>

#include "OrmelSDK/Base/ByteBuffer.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// Bytes that must be readable behind the text given to `decodePaddedJSON`; their contents do not matter.
inline constexpr std::size_t jsonPadding = 64;

/// Decodes like `JSONValue::decode`, without the copy that a text with no readable bytes behind it needs.
JSONValue decodePaddedJSON(std::string_view text);

/// Decodes the buffer's text, with `jsonPadding` bytes of room behind it. A large text, and all that was worked out
/// from it, is freed before the value is built, so that the two are never in memory together.
JSONValue decodePaddedJSON(ByteBuffer text);

}  // namespace ormel::detail
