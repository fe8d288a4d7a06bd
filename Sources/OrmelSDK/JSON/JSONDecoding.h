#pragma once

#include <cstddef>
#include <string_view>

#include "OrmelSDK/Base/ByteBuffer.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// Number of bytes that must be readable behind the text given to `decodePaddedJSON`; their contents do not matter.
inline constexpr std::size_t jsonPadding = 64;

/// Decodes like `JSONValue::decode`, without the copy that a text with no readable bytes behind it needs.
JSONValue decodePaddedJSON(std::string_view text);

/// Decodes the buffer's text, with `jsonPadding` bytes of room behind it. A large text is freed before its value is
/// built, so that the two are never in memory together.
JSONValue decodePaddedJSON(ByteBuffer text);

/// Decodes like `JSONValue::decode`, but always through simdjson's documented interface.
JSONValue decodeThroughDocument(std::string_view text);

/// Whether the other functions work on simdjson's internals, which are known for some of its releases; otherwise they,
/// too, use its documented interface.
bool decodesFromTape() noexcept;

}  // namespace ormel::detail
