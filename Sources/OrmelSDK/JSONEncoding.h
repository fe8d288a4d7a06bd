#pragma once

#include "OrmelSDK/ByteBuffer.h"
#include "OrmelSDK/JSONValue.h"

namespace ormel::detail {

/// Appends the compact JSON text of `value`. Fails as `JSONValue::encode`; what was appended until then stays.
void encodeJSON(const JSONValue& value, ByteBuffer& output);

}  // namespace ormel::detail
