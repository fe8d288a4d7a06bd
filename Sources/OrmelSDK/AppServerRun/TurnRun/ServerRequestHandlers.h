#pragma once

#include <optional>

#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun+ServerRequests.h"

namespace ormel::detail {

/// The meaning of one request of the server: the handler of the application that it asks, and the answer.
class ServerRequestHandlers {
 public:
  ServerRequestHandlers(const ServerRequestContext& run, const AppServerRequestID& id, const JSONValue& paramsValue)
      : run_(run), id_(id), paramsValue_(paramsValue), params_(*paramsValue.objectValue()) {}

  std::optional<PreparedServerRequestWork> handleRequestUserInput() const;
  std::optional<PreparedServerRequestWork> commandApproval() const;
  std::optional<PreparedServerRequestWork> fileChangeApproval() const;
  std::optional<PreparedServerRequestWork> permissionsApproval() const;
  std::optional<PreparedServerRequestWork> mcpElicitation() const;
  std::optional<PreparedServerRequestWork> toolCall() const;
  std::optional<PreparedServerRequestWork> authTokensRefresh() const;
  std::optional<PreparedServerRequestWork> attestation() const;

 private:
  const ThreadOptions& handlers() const { return run_.threadOptions; }
  const ActiveScope& scope() const { return run_.scope.active(); }
  /// Keeps an item that the server may ask for at any time. Without an operation it is dropped: an idle server may talk
  /// for ever.
  void keepForOperation(const ThreadItem& item) const;

  const ServerRequestContext& run_;
  const AppServerRequestID& id_;
  const JSONValue& paramsValue_;
  const JSONObject& params_;
};

}  // namespace ormel::detail
