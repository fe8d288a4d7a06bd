#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "OrmelSDK/Events/TurnEvents.h"
#include "OrmelSDK/Items/ThreadItem.h"
#include "OrmelSDK/Text/SharedTextSnapshots.h"

namespace ormel::detail {

/// The latest state of each item of an operation, to which deltas are added, and the tokens used.
///
/// *Thread safety*: none; it belongs to the run's strand.
class RunItems {
 public:
  /// Null if there is no such item.
  ThreadItem* find(std::string_view itemID);
  /// The item under the id, which is made if there is none. The caller turns it into one that has that id.
  ThreadItem& at(std::string_view itemID);

  std::size_t count() const noexcept { return itemStateByID_.size(); }

  /// Keeps the item under its id; returns whether there was none before.
  bool store(ThreadItem item);

  /// The copies of texts that grow.
  SharedTextSnapshots& snapshots() noexcept { return snapshots_; }

  std::optional<Usage> latestUsage;

  void prepareForNextTurn();

 private:
  std::map<std::string, ThreadItem, std::less<>> itemStateByID_;
  SharedTextSnapshots snapshots_;
};

}  // namespace ormel::detail
