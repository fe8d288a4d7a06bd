#pragma once

// What a piece of a stream makes of the item that it belongs to. `stored` is the last state of the item under that id,
// or null; it is not changed. A text that grows shares its buffer with the state before.

#include <optional>
#include <string>
#include <string_view>

#include "OrmelSDK/JSONValue.h"
#include "OrmelSDK/ThreadItem.h"

namespace ormel::detail {

/// A message that was not there before begins with the delta.
ThreadItem mergeAgentMessageDelta(const ThreadItem* stored, std::string itemID, std::string_view delta);

/// Absent if there is no such command.
std::optional<ThreadItem> mergeCommandOutputDelta(const ThreadItem* stored, std::string_view delta);

/// Absent if there is no such call.
std::optional<ThreadItem> mergeMcpToolCallProgress(const ThreadItem* stored, std::string message);

/// The changes replace those before. A change that was not there before is in progress.
ThreadItem mergeFileChangePatch(const ThreadItem* stored, std::string itemID, const JSONArray* changes);

/// The text so far, a reasoning's summary and content together, continues in one plan or as one text of content.
ThreadItem mergeReasoningLikeDelta(const ThreadItem* stored, std::string itemID, std::string_view delta, bool isPlan);

}  // namespace ormel::detail
