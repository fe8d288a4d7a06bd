#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>

#include "OrmelSDK/AppServerRun/Framing/AppServerRequestID.h"
#include "OrmelSDK/AppServerRun/TurnRun/StreamCompletion.h"
#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// A request in flight.
struct PendingResponse {
  /// Both end the request. Completing a request twice is a bug and terminates the process: one of the two outcomes
  /// would be lost silently.
  void resume(const JSONValue& result) const;
  void fail(const std::exception_ptr& error) const;

  OneShotResolver<JSONValue> continuation;
  Timer timeoutTask;
  /// Its answer is awaited past the normal end of the operation.
  bool survivesNormalStreamCompletion = false;
};

/// The requests of a run that wait for their answer.
///
/// Invariant: a request that is in here has not been answered. It is taken out before it is ended, so that of racing
/// outcomes the one that finds it decides.
///
/// *Thread safety*: none; it belongs to the run's strand.
class RunRequests {
 public:
  /// A new id; never one that this run has used, whatever became of the server process.
  AppServerRequestID takeID();

  void add(const AppServerRequestID& id, PendingResponse request);

  /// Takes a request out; nothing if it has ended.
  std::optional<PendingResponse> remove(const AppServerRequestID& id);

  /// These do nothing if the request has ended; they return whether it was in flight.
  bool complete(const AppServerRequestID& id, const JSONValue& result);
  bool fail(const AppServerRequestID& id, const std::exception_ptr& error);

  /// Fails what the end of an operation releases: after a normal one, all that do not survive it; else all.
  void release(const StreamCompletion& completion) noexcept;

  std::size_t count() const noexcept { return pendingResponses_.size(); }

 private:
  std::int64_t nextRequestID_ = 1;
  std::unordered_map<AppServerRequestID, PendingResponse> pendingResponses_;
};

}  // namespace ormel::detail
