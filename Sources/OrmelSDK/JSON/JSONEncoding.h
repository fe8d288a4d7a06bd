#pragma once

#include <cstddef>
#include <functional>

#include "OrmelSDK/Base/ByteBuffer.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// Appends the compact JSON text of `value`. Fails as `JSONValue::encode`; what was appended until then stays.
void encodeJSON(const JSONValue& value, ByteBuffer& output);

/// Like `encodeJSON`, in pieces: fills `piece` and passes it to `takePiece`, which must empty it, each time that it has
/// reached `pieceSize` bytes, and at the end. The buffer grows little beyond that size, however long the text is. Fails
/// as above, but always before the first piece was passed on.
void encodeJSONInPieces(const JSONValue& value, ByteBuffer& piece, std::size_t pieceSize,
                        const std::function<void(ByteBuffer&)>& takePiece);

}  // namespace ormel::detail
