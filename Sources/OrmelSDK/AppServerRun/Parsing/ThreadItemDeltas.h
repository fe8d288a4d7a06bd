#pragma once

// What a piece of a stream makes of the item that it belongs to. A text that grows shares its buffer with the copies of
// the item that were made before.

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "OrmelSDK/Items/ThreadItem.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Text/SharedTextSnapshots.h"

namespace ormel::detail {

// Those that come by the million work on the item itself, of which `snapshots` makes the copies.

/// An item that is no message becomes one, which begins with the delta.
AgentMessageItem& mergeAgentMessageDelta(ThreadItem& item, std::string_view itemID, std::string_view delta,
                                         SharedTextSnapshots& snapshots);

/// Null, with nothing done, if the item is no command.
CommandExecutionItem* mergeCommandOutputDelta(ThreadItem& item, std::string_view delta, SharedTextSnapshots& snapshots);

/// False, with nothing done, if the item is no call.
bool mergeMcpToolCallProgress(ThreadItem& item, std::string message);

/// Turns into a copy of an item with a text that grows, for a place that takes a `ThreadItem`.
template <class Item>
class GrownItemCopy {
 public:
  GrownItemCopy(Item& item, SharedText Item::* text, SharedTextSnapshots& snapshots) noexcept
      : item_(item), text_(text), snapshots_(snapshots) {}

  operator ThreadItem() const {
    SharedText whole;
    // The text stays out of the copy's making: copying it takes a reference.
    whole.swap(item_.*text_);
    ThreadItem copy(std::in_place_type<Item>, item_);
    whole.swap(item_.*text_);
    std::get<Item>(copy.value).*text_ = snapshots_.of(item_.*text_);
    return copy;
  }

 private:
  Item& item_;
  SharedText Item::* text_;
  SharedTextSnapshots& snapshots_;
};

// The others replace it. `stored` is the last state of the item under that id, or null.

/// The changes replace those before. A change that was not there before is in progress.
ThreadItem mergeFileChangePatch(const ThreadItem* stored, std::string itemID, const JSONArray* changes);

/// The text so far, a reasoning's summary and content together, continues in one plan or as one text of content.
ThreadItem mergeReasoningLikeDelta(const ThreadItem* stored, std::string itemID, std::string_view delta, bool isPlan);

}  // namespace ormel::detail
