#pragma once

// Deltas applied to the items that they belong to. A text that grows shares its buffer with the copies of the item that
// were made before.

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "OrmelSDK/Items/ThreadItem.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Text/SharedTextSnapshots.h"

namespace ormel::detail {

// Hot path: these mutate the stored item; `snapshots` makes the copies for events.

/// Turns an item that is no message into one that begins with the delta.
AgentMessageItem& mergeAgentMessageDelta(ThreadItem& item, std::string_view itemID, std::string_view delta,
                                         SharedTextSnapshots& snapshots);

/// Returns null and does nothing if the item is no command.
CommandExecutionItem* mergeCommandOutputDelta(ThreadItem& item, std::string_view delta, SharedTextSnapshots& snapshots);

/// Returns false and does nothing if the item is no call.
bool mergeMcpToolCallProgress(ThreadItem& item, std::string message);

/// Converts to a `ThreadItem` copy in place, taking the growing text from the snapshot pool.
template <typename Item>
class GrownItemCopy {
 public:
  GrownItemCopy(Item& item, SharedText Item::* text, SharedTextSnapshots& snapshots) noexcept
      : item_(item), text_(text), snapshots_(snapshots) {}

  operator ThreadItem() const {
    SharedText whole;
    // Move the text out first: copying it would cost an atomic increment.
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

// The following replace the item. `stored` is its last state, or null.

/// The changes replace those before. A change that was not there before is in progress.
ThreadItem mergeFileChangePatch(const ThreadItem* stored, std::string itemID, const JSONArray* changes);

/// The text so far, a reasoning's summary and content together, continues in one plan or as one text of content.
ThreadItem mergeReasoningLikeDelta(const ThreadItem* stored, std::string itemID, std::string_view delta, bool isPlan);

}  // namespace ormel::detail
