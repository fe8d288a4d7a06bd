#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/Items/DynamicToolCallItems.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::chat {

/// At most about one line of the text; "..." stands for the rest.
std::string shortened(std::string_view text);

std::string durationText(std::int64_t milliseconds);

/// The output of a tool as text; parts that are not text are shown by their address or type.
std::string toolText(const std::vector<JSONValue>& content);
std::string toolText(const std::vector<DynamicToolCallOutputContentItem>& content);

/// The text under the key, or the fallback.
std::string textViewMember(const JSONValue& object, std::string_view key, std::string_view fallback = "");

/// The text without white space at both ends.
std::string_view trimmed(std::string_view text);

/// The text as one word for the shell.
std::string shellWord(std::string_view text);

}  // namespace ormel::chat
