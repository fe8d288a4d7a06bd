#include "OrmelSDK/Management/ControlSession.h"

#include <exception>
#include <new>
#include <utility>

#include "OrmelSDK/Concurrency/PreparedWork.h"
#include "OrmelSDK/Management/ClientCall.h"

namespace ormel::detail {

ControlSession::ControlSession(AppServerRPCClientConfiguration configuration, ServerServices services)
    : configuration_(std::move(configuration)), services_(services), strand_(*services.scheduler, "control session") {}

ControlSession::~ControlSession() { finishSubscribers(); }

Task<void> ControlSession::perform(std::string method, std::optional<JSONValue> params, ReplyPlace reply) {
  co_await strand_.enter();
  const Client client = resolvedClient();
  std::exception_ptr failure;
  try {
    auto calling = callOn(client, std::move(method), std::move(params), reply);
    co_await std::move(calling);
    co_return;
  } catch (...) {
    failure = std::current_exception();
  }
  // The late failure of a client that was given up must not cost its successor.
  if (client_ == client) {
    client_.reset();
    co_await client->terminate();
  }
  std::rethrow_exception(failure);
}

ControlSession::Client ControlSession::resolvedClient() {
  if (client_) return client_;
  client_ = AppServerRPCClient::create(configuration_, services_, strand_);
  notificationRelayTask_.request_stop();
  notificationRelayTask_ = std::stop_source();
  auto relaying = relayNotifications(weak_from_this(), client_, client_->takeNotificationStream());
  std::move(relaying).onStrand(strand_).withStopToken(notificationRelayTask_.get_token()).detach();
  return client_;
}

Task<void> ControlSession::relayNotifications(std::weak_ptr<ControlSession> owner,
                                              std::weak_ptr<AppServerRPCClient> client,
                                              EventChannel<AppServerRPCNotification> stream) {
  const std::stop_token stop = co_await currentStopToken();
  for (;;) {
    const auto notifications = co_await stream.nextBatch();
    if (notifications.empty() || stop.stop_requested()) co_return;
    const auto session = owner.lock();
    const Client from = client.lock();
    if (!session) continue;
    try {
      for (const AppServerRPCNotification& notification : notifications) session->relay(notification, from);
    } catch (const std::bad_alloc&) {
      // One that loses a notification is to know.
      session->failSubscribers(std::current_exception());
    }
  }
}

void ControlSession::relay(const AppServerRPCNotification& notification, const Client& from) {
  if (!client_ || client_ != from) return;
  for (const auto& [id, continuation] : notificationContinuations_) {
    continuation.yield(OrmelControlNotification{notification.method, notification.params});
  }
}

Task<EventChannel<OrmelControlNotification>> ControlSession::notifications(Self self) {
  co_await self->strand_.enter();
  co_return self->subscribe();
}

EventChannel<OrmelControlNotification> ControlSession::subscribe() {
  // So that there is a relay.
  resolvedClient();
  const UUID id = UUID::random();
  auto [continuation, channel] = EventChannel<OrmelControlNotification>::make(ChannelLimit::newest(keptNotifications),
                                                                              "notification of the control session");
  auto remove = [owner = weak_from_this(), id] {
    if (const auto session = owner.lock()) session->removeNotificationContinuation(id);
  };
  continuation.onTermination([removal = PreparedWork(strand_, std::move(remove), "end of a subscription")](
                                 ChannelTermination) { removal.post(); });
  notificationContinuations_.emplace(id, std::move(continuation));
  return std::move(channel);
}

void ControlSession::removeNotificationContinuation(const UUID& id) { notificationContinuations_.erase(id); }

void ControlSession::finishSubscribers() {
  for (const auto& [id, continuation] : std::exchange(notificationContinuations_, {})) continuation.finish();
}

void ControlSession::failSubscribers(const std::exception_ptr& error) noexcept {
  for (const auto& [id, continuation] : std::exchange(notificationContinuations_, {})) continuation.fail(error);
}

Task<void> ControlSession::close(Self self) {
  co_await self->strand_.enter();
  const Client client = std::exchange(self->client_, nullptr);
  self->notificationRelayTask_.request_stop();
  self->finishSubscribers();
  if (client) co_await client->terminate();
}

}  // namespace ormel::detail
