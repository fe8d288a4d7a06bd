#include "OrmelSDK/AppServerRun/TurnRun/RunItems.h"

#include <utility>

namespace ormel::detail {

ThreadItem* RunItems::find(std::string_view itemID) {
  const auto entry = itemStateByID_.find(itemID);
  return entry == itemStateByID_.end() ? nullptr : &entry->second;
}

ThreadItem& RunItems::at(std::string_view itemID) {
  ThreadItem* const stored = find(itemID);
  return stored ? *stored : itemStateByID_[std::string(itemID)];
}

bool RunItems::store(ThreadItem item) {
  const auto entry = itemStateByID_.find(item.id());
  if (entry == itemStateByID_.end()) {
    std::string id = item.id();
    itemStateByID_.emplace(std::move(id), std::move(item));
    return true;
  }
  entry->second = std::move(item);
  return false;
}

void RunItems::prepareForNextTurn() {
  itemStateByID_.clear();
  snapshots_.giveBack();
  latestUsage.reset();
}

}  // namespace ormel::detail
