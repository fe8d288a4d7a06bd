#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <stop_token>
#include <string>
#include <unordered_map>

#include "OrmelSDK/AppServerRun/Framing/AppServerRequestID.h"
#include "OrmelSDK/Base/UUID.h"

namespace ormel::detail {

/// The circumstances in which a request of the server came: its answer is written only while they last.
struct ServerRequestScope {
  std::uint64_t transportGeneration = 0;
  std::optional<std::uint64_t> operationGeneration;
  /// Tells apart two requests under one id.
  UUID token;
  friend bool operator==(const ServerRequestScope&, const ServerRequestScope&) = default;
};

/// The requests of the server that wait for the application: those that a handler works on, and the questions that
/// `submitUserInput` will answer.
///
/// *Thread safety*: none; it belongs to the run's strand.
class RunServerRequests {
 public:
  RunServerRequests() = default;
  RunServerRequests(const RunServerRequests&) = delete;
  RunServerRequests& operator=(const RunServerRequests&) = delete;
  /// Cancels all: nobody waits for an answer any more.
  ~RunServerRequests() { cancelAllPendingServerRequestTasks(); }

  /// Notes a request; one under the same id is cancelled. Returns the token that its handler's task observes.
  std::stop_token add(const AppServerRequestID& id, const ServerRequestScope& scope);

  /// Whether the request is still waiting under this scope.
  bool contains(const AppServerRequestID& id, const ServerRequestScope& scope) const;

  void remove(const AppServerRequestID& id);
  void cancelPendingServerRequest(const AppServerRequestID& id);
  void cancelAllPendingServerRequestTasks();

  void addUserInput(std::string itemID, AppServerRequestID id);
  std::optional<AppServerRequestID> findUserInput(const std::string& itemID) const;
  void removeUserInput(const std::string& itemID);

  /// No request outlives the operation in which it came.
  void prepareForNextTurn() { operationDidEnd(); }
  void operationDidEnd();

  std::size_t count() const noexcept { return pendingServerRequestTasks_.size(); }

 private:
  struct PendingServerRequestTask {
    ServerRequestScope scope;
    std::stop_source task;
  };

  std::unordered_map<AppServerRequestID, PendingServerRequestTask> pendingServerRequestTasks_;
  std::map<std::string, AppServerRequestID> pendingUserInputRequestIDByItemID_;
};

}  // namespace ormel::detail
