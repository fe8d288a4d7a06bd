#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "OrmelSDK/Management/ControlSession.h"
#include "Support/SimulatedServer.h"

namespace ormel::testing {

/// A control session on a simulated server. At its end it is closed, and the server fails the test if anything is left.
class SimulatedSession {
 public:
  using Heard = std::shared_ptr<std::vector<std::string>>;

  explicit SimulatedSession(SimulatedServer& atServer)
      : session(std::make_shared<detail::ControlSession>(atServer.configuration, atServer.services())),
        server_(atServer) {}
  SimulatedSession(const SimulatedSession&) = delete;
  SimulatedSession& operator=(const SimulatedSession&) = delete;
  ~SimulatedSession() {
    if (session) close();
  }

  /// A call of which any result is taken.
  Task<JSONValue> call(std::string method = "a/b", std::optional<JSONValue> params = std::nullopt) const {
    return detail::performFor<JSONValue>(session, std::move(method), std::move(params));
  }
  std::string ended(std::string method = "a/b") const { return server_.told(server_.start(call(std::move(method)))); }
  EventChannel<OrmelControlNotification> subscribe() const {
    return server_.end(detail::ControlSession::notifications(session));
  }
  void close() const { server_.end(detail::ControlSession::close(session)); }

  /// Follows the notifications of a subscription, in words; their end too.
  Heard listen() const {
    auto heard = std::make_shared<std::vector<std::string>>();
    server_.start(noted(subscribe(), heard));
    return heard;
  }

  std::shared_ptr<detail::ControlSession> session;

 private:
  static Task<void> noted(EventChannel<OrmelControlNotification> notifications, Heard heard) {
    try {
      while (const auto told = co_await notifications.next()) heard->push_back(told->method);
      heard->emplace_back("end");
    } catch (...) {
      heard->push_back(inWords(std::current_exception()));
    }
  }

  SimulatedServer& server_;
};

/// The same scenario under several orders of what can happen at the same time.
template <typename Scenario>
void withSessions(Scenario scenario) {
  withServers([&](SimulatedServer& server) {
    SimulatedSession session(server);
    scenario(server, session);
  });
}

}  // namespace ormel::testing
