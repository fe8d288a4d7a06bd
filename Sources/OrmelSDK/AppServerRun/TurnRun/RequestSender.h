#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "OrmelSDK/AppServerRun/Framing/AppServerRequestID.h"
#include "OrmelSDK/AppServerRun/Launch/FailureCauses.h"
#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

class RunLife;
class RunLifecycle;
class RunRequests;
class RunStream;
class RunTransport;

/// Sends the requests and notifications of a run. `RunRequests` keeps those in flight.
///
/// *Thread safety*: none; it belongs to the run's strand.
/// *Object lifetimes*: the caller of `sendRequest` keeps the run alive until it has ended.
class RequestSender {
 public:
  struct Context {
    const RunLife& life;
    std::chrono::nanoseconds requestTimeout;
    RunTransport& transport;
    RunRequests& requests;
    RunStream& stream;
    RunLifecycle& lifecycle;
    FailureCauses causes;
  };
  explicit RequestSender(const Context& context) : run_(context) {}

  /// Ends with the `result` of the server's answer. Fails with `ThreadRunError` of the kind `streamError`, with
  /// `OrmelProcessError::aborted`, or with `CancelledError` when its task is cancelled. A request that gets no answer
  /// in time fails the operation that it belongs to as well.
  Task<JSONValue> sendRequest(std::string method, std::optional<JSONValue> params);

  void writeNotification(std::string_view method, const std::optional<JSONValue>& params = std::nullopt);

 private:
  Timer timeoutTask(const AppServerRequestID& id, std::string method, std::optional<std::uint64_t> operationGeneration);
  void timeoutPendingRequest(const AppServerRequestID& id, std::string_view method,
                             std::optional<std::uint64_t> operationGeneration);
  void cancelPendingRequest(const AppServerRequestID& id);

  const Context run_;
};

}  // namespace ormel::detail
