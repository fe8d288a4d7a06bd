#pragma once

#include <cstddef>
#include <string_view>

#include "OrmelSDK/JSONValue.h"

namespace ormel::detail {

/// Bytes that must be readable behind the text given to `decodePaddedJSON`; their contents do not matter.
inline constexpr std::size_t jsonPadding = 64;

/// Decodes like `JSONValue::decode`, without the copy that a text with no readable bytes behind it needs.
JSONValue decodePaddedJSON(std::string_view text);

}  // namespace ormel::detail
