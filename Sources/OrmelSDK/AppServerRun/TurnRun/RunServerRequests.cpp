#include "OrmelSDK/AppServerRun/TurnRun/RunServerRequests.h"

#include <utility>

namespace ormel::detail {

std::stop_token RunServerRequests::add(const AppServerRequestID& id, const ServerRequestScope& scope) {
  cancelPendingServerRequest(id);
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

void RunServerRequests::cancelPendingServerRequest(const AppServerRequestID& id) {
  auto node = pendingServerRequestTasks_.extract(id);
  if (!node.empty()) node.mapped().task.request_stop();
}

// The map is emptied first: a cancelled task that acts at once must not find its entry.
void RunServerRequests::cancelAllPendingServerRequestTasks() {
  for (auto& [id, pending] : std::exchange(pendingServerRequestTasks_, {})) pending.task.request_stop();
}

void RunServerRequests::operationDidEnd() {
  pendingUserInputRequestIDByItemID_.clear();
  cancelAllPendingServerRequestTasks();
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
