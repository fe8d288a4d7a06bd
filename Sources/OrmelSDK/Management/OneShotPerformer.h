#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "OrmelSDK/AppServerRun/Connection/ServerServices.h"
#include "OrmelSDK/AppServerRun/RPCClient/AppServerRPCClient.h"
#include "OrmelSDK/Management/CallPerformer.h"

namespace ormel::detail {

/// Performs each call on a server process of its own, which is stopped before the call ends.
///
/// *Thread safety*: immutable; calls at the same time do not see each other.
///
/// *Errors*: a cancelled call, and one that fails with `ThreadRunError` of the kind `streamError`, fail with the same
/// kind of error, whose text names the method. All other errors come as they are.
class OneShotPerformer final : public CallPerformer {
 public:
  explicit OneShotPerformer(AppServerRPCClientConfiguration configuration, ServerServices services = ServerServices())
      : configuration_(std::move(configuration)), services_(services) {}

  const AppServerRPCClientConfiguration& configuration() const noexcept { return configuration_; }

  /// The same, but the server is told other capabilities.
  std::shared_ptr<OneShotPerformer> withCapabilities(AppServerInitializeCapabilities initializeCapabilities) const;

  Task<void> perform(std::string method, std::optional<JSONValue> params, ReplyPlace reply) override;

  /// Sends a notification to a server process of its own, which gets half a second to act on it and exit. Fails with
  /// what goes wrong as it is.
  static Task<void> performNotification(std::shared_ptr<const OneShotPerformer> self, std::string method,
                                        std::optional<JSONValue> params);

 private:
  std::shared_ptr<AppServerRPCClient> newClient() const;

  const AppServerRPCClientConfiguration configuration_;
  const ServerServices services_;
};

}  // namespace ormel::detail
