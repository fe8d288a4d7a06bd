#pragma once

#include <optional>
#include <string>

#include "OrmelSDK/Items/ThreadItem.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// The thread and the turn that a run works on at the moment, as far as they are known.
struct ActiveScope {
  std::optional<std::string> activeThreadID;
  std::optional<std::string> activeTurnID;
};

/// The item in a notification of the server; absent when the value is no item. Never fails: a member that is
/// missing or malformed takes a default. Far more lenient than the items' JSON form, whose keys and words are others.
///
/// A compaction of the context that comes without an id takes one from `scope`, or a new one.
std::optional<ThreadItem> parseThreadItem(const JSONValue& from, const ActiveScope& scope);

}  // namespace ormel::detail
