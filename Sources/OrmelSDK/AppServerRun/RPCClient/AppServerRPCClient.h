#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "OrmelSDK/AppServerRun/Connection/ServerConnection.h"
#include "OrmelSDK/AppServerRun/Connection/ServerServices.h"
#include "OrmelSDK/AppServerRun/Framing/AppServerLockedData.h"
#include "OrmelSDK/AppServerRun/Framing/AppServerRequestID.h"
#include "OrmelSDK/AppServerRun/Launch/FailureCauses.h"
#include "OrmelSDK/AppServerRun/Payloads/AppServerInitializeCapabilities.h"
#include "OrmelSDK/AppServerRun/RPCClient/AppServerRPCNotification.h"
#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Concurrency/EventChannel.h"
#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Concurrency/Strand.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Options/OrmelOptions.h"

namespace ormel::detail {

/// The configuration of a client, fixed for its life.
struct AppServerRPCClientConfiguration {
  AppServerRPCClientConfiguration() = default;

  std::string executablePath;
  /// Put in front of the server's `PATH`.
  std::vector<std::string> ormelPathDirectories;
  OrmelOptions ormelOptions;
  AppServerInitializeCapabilities initializeCapabilities = AppServerInitializeCapabilities::forManagement();
};

/// The plain connection to the server, for everything that is not a turn: requests and their answers, notifications
/// both ways. It owns one server process at a time, serves no requests of the server, has no time-outs, and learns of
/// the end of the process by the end of its output alone.
///
///     const auto client = AppServerRPCClient::create(configuration, services, Strand(scheduler));
///     co_await client->startProcess();
///     co_await client->initializeIfNeeded();
///     const JSONValue result = co_await client->sendRequest("thread/list", params);
///     ...
///     co_await client->terminate();
///
/// One bad line of the server ends the process and fails all requests that are in flight. The client can be started
/// again then; after `terminate` too, but its notifications have ended for good.
///
/// *Thread safety*: the operations that return a `Task` may be called from any thread; they run on the client's strand.
///
/// *Object lifetimes*: held by shared pointers; a caller holds one until its operation has ended. The reader and the
/// handshake hold the client weakly. A client that goes while its process is there ends the process.
///
/// *Errors*: `OrmelProcessError` when the process cannot be started, `AppServerRPCError` for a request that the server
/// refused, `ThreadRunError` of the kind `streamError` when the connection is at fault.
///
/// *Cancellation*: a wait of a cancelled caller ends with `CancelledError`. The server is not told, its late answer is
/// dropped, and the other callers notice nothing.
class AppServerRPCClient final : public std::enable_shared_from_this<AppServerRPCClient> {
 public:
  /// The strand may be that of the client's only user, whose calls then need no change of strands.
  static std::shared_ptr<AppServerRPCClient> create(AppServerRPCClientConfiguration configuration,
                                                    ServerServices services, Strand strand);

  AppServerRPCClient(const AppServerRPCClient&) = delete;
  AppServerRPCClient& operator=(const AppServerRPCClient&) = delete;
  ~AppServerRPCClient();

  const Strand& strand() const noexcept { return strand_; }

  /// Starts the server unless it runs. The executable is vetted before.
  Task<void> startProcess();

  /// Shakes hands with the server, once for each process; callers that come meanwhile wait for the same handshake. One
  /// that fails does so for all of them, and the next caller tries afresh.
  Task<void> initializeIfNeeded();

  /// The result of the request.
  Task<JSONValue> sendRequest(std::string method, std::optional<JSONValue> params = std::nullopt);

  /// Ends when the notification is queued for the server.
  Task<void> sendNotification(std::string method, std::optional<JSONValue> params = std::nullopt);

  /// Ends the process after it had the chance to read what was sent: its input is closed, and it gets half a second to
  /// exit by itself.
  Task<void> finishNotifications();

  /// Ends everything at once: requests in flight and starts under way fail, the notifications end, and the process is
  /// told to terminate.
  Task<void> terminate();

  /// The notifications of the server, over all its processes. To be taken once, on the client's strand.
  EventChannel<AppServerRPCNotification> takeNotificationStream() { return std::move(notificationStream_); }

  // For what is below, and for tests; on the client's strand.

  bool hasProcess() const noexcept { return process_ != nullptr; }
  bool didInitializeProcess() const noexcept { return didInitializeProcess_; }
  std::size_t requestsInFlight() const noexcept { return pendingResponses_.size(); }
  /// Everything that its processes have written to their standard error.
  std::string errorText() const { return stderrAccumulator_->string(); }

 private:
  using Self = std::shared_ptr<AppServerRPCClient>;

  /// The handshake in flight, and who waits for it.
  struct InitializationTask {
    std::vector<OneShotResolver<void>> waiters;
  };

  AppServerRPCClient(AppServerRPCClientConfiguration configuration, ServerServices services, Strand strand);

  void launch(const LaunchSettings& settings);

  static Task<void> initialize(std::weak_ptr<AppServerRPCClient> owner, std::shared_ptr<InitializationTask> task);
  static Task<void> performInitialization(std::weak_ptr<AppServerRPCClient> owner,
                                          std::shared_ptr<InitializationTask> task);

  AppServerRequestID takeRequestID();
  OneShot<JSONValue> beginRequest(const AppServerRequestID& id, std::string_view method,
                                  const std::optional<JSONValue>& params);
  void cancelPendingRequest(const AppServerRequestID& id);
  std::optional<OneShotResolver<JSONValue>> takePendingResponse(const AppServerRequestID& id);
  void completePendingResponses(const ThreadRunError& failure);
  void completePendingResponses(const std::exception_ptr& error) noexcept;
  void writePayload(const JSONValue& payload);

  static Task<void> readStdout(std::weak_ptr<AppServerRPCClient> owner, Strand strand, ServerOutput output,
                               std::shared_ptr<StandardErrorCollector> errorOutput,
                               std::shared_ptr<TerminationNotice> termination, Scheduler& scheduler);
  static Task<void> readStdoutLoop(std::weak_ptr<AppServerRPCClient> owner, Strand strand, ServerOutput output,
                                   std::shared_ptr<StandardErrorCollector> errorOutput,
                                   std::shared_ptr<TerminationNotice> termination, Scheduler& scheduler);
  void handleIncomingLine(std::string_view paddedLine) noexcept;
  void handleMessage(const JSONValue& message);
  void handleResponse(const JSONObject& message);
  std::string eofMessage() const;
  FailureCauses causes() const;
  FailureCauses::Cause causeOfEnd() const;
  void failPendingResponses(const std::string& message, FailureCauses::Cause cause = nullptr);
  void failPendingResponses(const std::exception_ptr& error) noexcept;
  void shutdownProcess();

  const AppServerRPCClientConfiguration configuration_;
  const ServerServices services_;
  const Strand strand_;

  std::unique_ptr<ServerConnection> process_;
  bool didInitializeProcess_ = false;
  std::shared_ptr<InitializationTask> initializationTask_;
  /// Tells a start that the client was terminated during the assessment of the executable.
  std::uint64_t terminations_ = 0;
  std::int64_t nextRequestID_ = 1;
  std::unordered_map<AppServerRequestID, OneShotResolver<JSONValue>> pendingResponses_;
  /// Collects from all processes: the words of an earlier one can explain the end of the next.
  const std::shared_ptr<AppServerLockedData> stderrAccumulator_ = std::make_shared<AppServerLockedData>();
  EventProducer<AppServerRPCNotification> notificationContinuation_;
  EventChannel<AppServerRPCNotification> notificationStream_;
};

}  // namespace ormel::detail
