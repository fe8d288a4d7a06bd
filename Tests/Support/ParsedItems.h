#pragma once

// Items read as a run reads them from the server's notifications, given as JSON texts.

#include <gtest/gtest.h>

#include <optional>
#include <string_view>
#include <variant>

#include "OrmelSDK/AppServerRun/Parsing/ThreadItemParsing.h"
#include "OrmelSDK/Items/ThreadItem.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::tests {

inline std::optional<ThreadItem> parsed(std::string_view text, const detail::ActiveScope& scope = {}) {
  return detail::parseThreadItem(JSONValue::decode(text), scope);
}

/// The item as the case that it must be; an empty one, and a failure of the test, if it is another.
template <typename Item>
Item parsedAs(std::string_view text) {
  const auto item = parsed(text);
  if (!item || !std::holds_alternative<Item>(item->value)) {
    ADD_FAILURE() << "read as another case: " << text;
    return Item();
  }
  return std::get<Item>(item->value);
}

}  // namespace ormel::tests
