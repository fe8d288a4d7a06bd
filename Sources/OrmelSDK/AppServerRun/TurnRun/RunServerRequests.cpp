#include "OrmelSDK/AppServerRun/TurnRun/RunServerRequests.h"

#include <utility>

namespace ormel::detail {

std::stop_token RunServerRequests::add(const AppServerRequestID& id, const ServerRequestScope& scope) {
  cancel(id);
  PendingServerRequestTask pending{scope, {}};
  auto token = pending.task.get_token();
  pendingServerRequestTasks_.emplace(id, std::move(pending));
  return token;
}

bool RunServerRequests::contains(const AppServerRequestID& id, const ServerRequestScope& scope) const {
  const auto entry = pendingServerRequestTasks_.find(id);
  return entry != pendingServerRequestTasks_.end() && entry->second.scope == scope;
}

void RunServerRequests::remove(const AppServerRequestID& id) { pendingServerRequestTasks_.erase(id); }

void RunServerRequests::cancel(const AppServerRequestID& id) {
  auto node = pendingServerRequestTasks_.extract(id);
  if (!node.empty()) node.mapped().task.request_stop();
}

// Emptied first: what a cancelled task does at once must find nothing of it here.
void RunServerRequests::cancelAll() {
  for (auto& [id, pending] : std::exchange(pendingServerRequestTasks_, {})) pending.task.request_stop();
}

void RunServerRequests::addUserInput(std::string itemID, AppServerRequestID id) {
  pendingUserInputRequestIDByItemID_.insert_or_assign(std::move(itemID), std::move(id));
}

std::optional<AppServerRequestID> RunServerRequests::findUserInput(const std::string& itemID) const {
  const auto entry = pendingUserInputRequestIDByItemID_.find(itemID);
  if (entry == pendingUserInputRequestIDByItemID_.end()) return std::nullopt;
  return entry->second;
}

void RunServerRequests::removeUserInput(const std::string& itemID) { pendingUserInputRequestIDByItemID_.erase(itemID); }

}  // namespace ormel::detail
