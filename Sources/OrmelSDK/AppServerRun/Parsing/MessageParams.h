#pragma once

#include <optional>
#include <string_view>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// The object under `params` of a message, or an empty one. Refers into the message.
const JSONValue& paramsOf(const JSONValue& payload);

/// The ids that the params of a notification or of a server request name. They refer into the message.
struct MessageIDs {
  std::optional<std::string_view> threadID;
  std::optional<std::string_view> turnID;
};

/// Each id is looked up under "threadId", else "thread_id" ("turnId", else "turn_id"). An id that is no text is no id.
MessageIDs idsIn(const JSONObject& params);

}  // namespace ormel::detail
