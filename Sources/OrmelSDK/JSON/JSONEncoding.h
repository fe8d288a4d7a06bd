#pragma once

#include <cstddef>
#include <functional>

#include "OrmelSDK/Base/ByteBuffer.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// Appends the compact JSON text of `value`. Fails as `JSONValue::encode`; what was appended until then stays.
void encodeJSON(const JSONValue& value, ByteBuffer& output);

/// The same in pieces: `piece` is filled, and given to `takePiece` to be emptied, each time that it has reached
/// `pieceSize` bytes, and at the end. It grows little beyond that size, however long the text is. Fails as above, but
/// always before anything was given away.
void encodeJSONInPieces(const JSONValue& value, ByteBuffer& piece, std::size_t pieceSize,
                        const std::function<void(ByteBuffer&)>& takePiece);

}  // namespace ormel::detail
