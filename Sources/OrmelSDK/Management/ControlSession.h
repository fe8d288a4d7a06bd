#pragma once

#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

#include "OrmelSDK/AppServerRun/Connection/ServerServices.h"
#include "OrmelSDK/AppServerRun/RPCClient/AppServerRPCClient.h"
#include "OrmelSDK/Base/UUID.h"
#include "OrmelSDK/Concurrency/EventChannel.h"
#include "OrmelSDK/Concurrency/Strand.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Management/CallPerformer.h"
#include "OrmelSDK/Management/OrmelControlNotification.h"

namespace ormel::detail {

/// The state that handles of one `OrmelControlSession` share: the client that is kept between calls, and the
/// subscribers.
///
/// Invariants: a call that fails gives up the client it used, unless that has been given up already; only
/// the current client's notifications reach the subscribers; a subscription outlives any number of clients.
///
/// *Thread safety*: the operations that return a `Task` may be called from any thread; they run on the session's
/// strand, which its clients share.
///
/// *Object lifetimes*: held by shared pointers; operations under way hold the session, the relay does not. With the
/// session its client goes, unless a call still uses it, and its subscribers' channels end.
class ControlSession final : public CallPerformer, public std::enable_shared_from_this<ControlSession> {
 public:
  explicit ControlSession(AppServerRPCClientConfiguration configuration, ServerServices services = ServerServices());
  ControlSession(const ControlSession&) = delete;
  ControlSession& operator=(const ControlSession&) = delete;
  ~ControlSession() override;

  /// Fails with what goes wrong as it is.
  Task<void> perform(std::string method, std::optional<JSONValue> params, ReplyPlace reply) override;

  using Self = std::shared_ptr<ControlSession>;

  /// These do not fail.
  static Task<EventChannel<OrmelControlNotification>> notifications(Self self);
  static Task<void> close(Self self);

  const Strand& strand() const noexcept { return strand_; }

  // For tests; on the session's strand.

  const std::shared_ptr<AppServerRPCClient>& client() const noexcept { return client_; }
  std::size_t subscribers() const noexcept { return notificationContinuations_.size(); }

 private:
  using Client = std::shared_ptr<AppServerRPCClient>;

  /// A slow subscriber keeps so many of the newest notifications and loses the older ones.
  static constexpr std::size_t keptNotifications = 32;

  Client resolvedClient();
  EventChannel<OrmelControlNotification> subscribe();
  static Task<void> relayNotifications(std::weak_ptr<ControlSession> owner, std::weak_ptr<AppServerRPCClient> client,
                                       EventChannel<AppServerRPCNotification> stream);
  void relay(const AppServerRPCNotification& notification, const Client& from);
  void removeNotificationContinuation(const UUID& id);
  void finishSubscribers();
  void failSubscribers(const std::exception_ptr& error) noexcept;

  const AppServerRPCClientConfiguration configuration_;
  const ServerServices services_;
  const Strand strand_;

  Client client_;
  std::stop_source notificationRelayTask_{std::nostopstate};
  std::map<UUID, EventProducer<OrmelControlNotification>> notificationContinuations_;
};

}  // namespace ormel::detail
