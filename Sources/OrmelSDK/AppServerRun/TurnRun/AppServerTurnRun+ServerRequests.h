#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include "OrmelSDK/AppServerRun/Framing/AppServerRequestID.h"
#include "OrmelSDK/AppServerRun/TurnRun/AppServerMessage.h"
#include "OrmelSDK/AppServerRun/TurnRun/CoordinatorScope.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunServerRequests.h"
#include "OrmelSDK/AppServerRun/TurnRun/ServerRequestAnswers.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Options/ThreadOptions.h"

namespace ormel::detail {

class RunClosing;
class RunItems;
class RunLife;
class RunLifecycle;
class RunProblems;
class RunStream;
class RunTransport;

/// The item that an answer completes, if there is one.
struct ServerRequestCompletionContext {
  struct McpElicitation {
    std::string itemID;
    std::string serverName;
    JSONValue arguments;
  };
  std::optional<McpElicitation> mcpElicitation;
};

/// A request of the server whose answer is to be worked out.
struct PreparedServerRequestWork {
  explicit PreparedServerRequestWork(Task<ServerRequestAnswer> responseTask) : response(std::move(responseTask)) {}

  Task<ServerRequestAnswer> response;
  ServerRequestCompletionContext completionContext;
};

/// The parts of a run that requests of the server act on.
struct ServerRequestContext {
  const RunLife& life;
  const RunClosing& closing;
  const ThreadOptions& threadOptions;
  RunTransport& transport;
  RunStream& stream;
  CoordinatorScope& scope;
  RunItems& items;
  RunServerRequests& serverRequests;
  RunLifecycle& lifecycle;
  const RunProblems& problems;
};

/// Answers the requests of the server, by way of the application's handlers.
///
/// *Thread safety*: `submitUserInput` may be called from any thread; all else belongs to the run's strand.
class ServerRequestDispatcher {
 public:
  explicit ServerRequestDispatcher(const ServerRequestContext& context) : run_(context) {}

  /// Begins to work on a request. Fails as `prepareServerRequestWork`.
  void dispatchServerRequest(const ServerRequestMessage& request);

  /// Answers the questions of the item `itemID`; see `AppServerTurnRun::submitUserInput`.
  Task<void> submitUserInput(std::string itemID, std::map<std::string, std::vector<std::string>> answers,
                             std::optional<std::uint64_t> expectedOperationGeneration);

 private:
  /// Works an answer out, unless the thread is closing, and writes it if it is still wanted then. The run is held only
  /// for the second.
  static Task<void> serve(std::weak_ptr<void> run, ServerRequestDispatcher& self, std::string method,
                          AppServerRequestID id, ServerRequestScope scope, std::stop_token closing,
                          PreparedServerRequestWork work);
  /// Takes the request out, unless its answer is not wanted any more.
  bool takePendingServerRequest(const AppServerRequestID& id, const ServerRequestScope& scope);
  /// Each tells whether the request was still waiting.
  bool completePendingServerRequest(const AppServerRequestID& id, const ServerRequestScope& scope,
                                    const JSONValue& result, const ServerRequestCompletionContext& context);
  bool failPendingServerRequest(const AppServerRequestID& id, const ServerRequestScope& scope,
                                const std::exception_ptr& error);
  void applyServerRequestResult(const AppServerRequestID& id, const JSONValue& result,
                                const ServerRequestCompletionContext& context);

  Task<void> submit(std::shared_ptr<void> life, std::string itemID,
                    std::map<std::string, std::vector<std::string>> answers,
                    std::optional<std::uint64_t> expectedOperationGeneration);
  void completeUserInputItem(const std::string& itemID, const JSONValue& answers, std::uint64_t operationGeneration);

  const ServerRequestContext run_;
};

void respondToServerRequest(RunTransport& transport, const AppServerRequestID& id, const JSONValue& result);
void respondToServerRequestError(RunTransport& transport, const AppServerRequestID& id, std::int64_t code,
                                 const std::string& message);

/// The item of a tool's call that is under way.
McpToolCallItem openToolCall(std::string id, std::string server, std::string tool, JSONValue arguments);

/// The tool under which an elicitation is shown.
inline constexpr const char* elicitationTool = "elicitation/request";

/// Gives the work that leads to the answer, or nothing when the request is finished with: it has been answered, or it
/// waits for the user. Fails with `ThreadRunError` of the kind `streamError` when the request lacks what it is about.
std::optional<PreparedServerRequestWork> prepareServerRequestWork(const ServerRequestContext& run,
                                                                  const ServerRequestMessage& request,
                                                                  const AppServerRequestID& id);

}  // namespace ormel::detail
