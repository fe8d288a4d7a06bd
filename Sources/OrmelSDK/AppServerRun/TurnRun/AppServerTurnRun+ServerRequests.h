#pragma once

#include <optional>
#include <string>
#include <utility>

#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun.h"

namespace ormel::detail {

/// The item that shows an elicitation, to be completed by its answer.
struct ElicitationContext {
  std::string itemID;
  std::string serverName;
  JSONValue arguments;
};

/// A request of the server whose answer is to be worked out.
struct PreparedServerRequestWork {
  explicit PreparedServerRequestWork(Task<JSONValue> responseTask) : response(std::move(responseTask)) {}

  Task<JSONValue> response;
  std::optional<ElicitationContext> completionContext;
};

/// What one request of the server means.
struct AppServerTurnRun::ServerRequests {
  /// Gives the work that leads to the answer, or nothing when the request is finished with: it has been answered, or it
  /// waits for the user.
  static std::optional<PreparedServerRequestWork> prepare(AppServerTurnRun& run, const ServerRequestMessage& request,
                                                          const AppServerRequestID& id);

  std::optional<PreparedServerRequestWork> userInput() const;
  std::optional<PreparedServerRequestWork> commandApproval() const;
  std::optional<PreparedServerRequestWork> fileChangeApproval() const;
  std::optional<PreparedServerRequestWork> permissionsApproval() const;
  std::optional<PreparedServerRequestWork> elicitation() const;
  std::optional<PreparedServerRequestWork> toolCall() const;
  std::optional<PreparedServerRequestWork> authTokensRefresh() const;
  std::optional<PreparedServerRequestWork> attestation() const;

  AppServerTurnRun& run;
  const AppServerRequestID& id;
  const JSONValue& paramsValue;
  const JSONObject& params;

 private:
  const ThreadOptions& handlers() const { return run.configuration_.threadOptions; }
  const ActiveScope& scope() const { return run.scope_.active(); }
};

}  // namespace ormel::detail
