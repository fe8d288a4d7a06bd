#pragma once

#include <optional>
#include <string_view>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// The object under `params` of a message, or an empty one. Refers into the message.
const JSONValue& paramsOf(const JSONValue& payload);

/// The id of the thread or turn in the params of a notification or of a server request: under "threadId", else
/// "thread_id" ("turnId", else "turn_id"). An id that is no text is no id.
std::optional<std::string_view> threadIDIn(const JSONObject& params);
std::optional<std::string_view> turnIDIn(const JSONObject& params);

}  // namespace ormel::detail
