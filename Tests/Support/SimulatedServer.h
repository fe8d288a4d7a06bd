#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "OrmelSDK/AppServerRun/RPCClient/AppServerRPCClient.h"
#include "Support/ConcurrencySchedulers.h"
#include "Support/InMemoryServer.h"
#include "Support/RunTranscript.h"

namespace ormel::testing {

/// A server in a simulation that shakes hands and leaves all other requests unanswered until it is told otherwise, and
/// what a client of it is made with. Clients are made after it and go before it: at its end it fails the test if
/// anything is left of them.
class SimulatedServer {
 public:
  using Client = std::shared_ptr<detail::AppServerRPCClient>;
  using Reply = std::function<void(InMemoryProcess&, const JSONValue& request)>;

  explicit SimulatedServer(SimulatedScheduler& onScheduler)
      : scheduler(onScheduler), server(onScheduler), blockingWork_(onScheduler) {
    InMemoryServerScript script;
    script.onStart = [this](InMemoryProcess& process) {
      if (onStart) onStart(process);
    };
    script.onInputEnd = [this](InMemoryProcess& process) {
      if (onInputEnd) return onInputEnd(process);
      process.exit(0);
    };
    script.onMessage = [this](InMemoryProcess& process, const JSONValue& message) { respond(process, message); };
    server.setScript(std::move(script));
    answer("initialize", "{}");
    configuration.executablePath = "/opt/ormel";
    configuration.ormelOptions.selectedOrmelPathOverride = true;
  }
  SimulatedServer(const SimulatedServer&) = delete;
  SimulatedServer& operator=(const SimulatedServer&) = delete;
  ~SimulatedServer() {
    scheduler.run();
    EXPECT_EQ(server.running(), 0U);
    EXPECT_EQ(server.held(), 0U);
    EXPECT_EQ(server.read(), 0U);
    EXPECT_TRUE(scheduler.pending().ends_with("ready:; timers:; waiting:")) << scheduler.pending();
  }

  // The server's actions.

  void reply(const std::string& method, Reply with) { replies_[method] = std::move(with); }
  void answer(const std::string& method, std::string_view result) {
    reply(method, [value = JSONValue::decode(result)](InMemoryProcess& process, const JSONValue& request) {
      process.answer(request, value);
    });
  }
  void refuse(const std::string& method, std::string_view error) {
    reply(method, [value = JSONValue::decode(error)](InMemoryProcess& process, const JSONValue& request) {
      process.send(JSONValue::object({{"id", *request.find("id")}, {"error", value}}));
    });
  }
  /// Keeps requests of the method unanswered.
  void keep(const std::string& method) { replies_.erase(method); }
  void exit(const std::string& method, std::string_view lastWords = "") {
    reply(method, [words = std::string(lastWords)](InMemoryProcess& process, const JSONValue&) {
      process.writeError(words);
      process.exit(1);
    });
  }

  InMemoryProcess& process() { return server.lastProcess(); }
  void write(std::string_view bytes) {
    process().write(bytes);
    settle();
  }
  void notify(std::string_view method, std::string_view params = "{}") {
    process().notify(method, JSONValue::decode(params));
    settle();
  }

  // The actions of the client's side.

  detail::ServerServices services() { return {scheduler, server, blockingWork_}; }
  Client newClient() {
    return detail::AppServerRPCClient::create(configuration, services(), Strand(scheduler, "client"));
  }
  /// A client that has shaken hands.
  Client readyClient() {
    const Client client = newClient();
    end(client->startProcess());
    end(client->initializeIfNeeded());
    return client;
  }

  template <typename T>
  std::shared_ptr<Outcome<T>> start(Task<T> task, std::stop_token token = {}) {
    auto outcome = startOn(scheduler, std::move(task), std::move(token));
    settle();
    return outcome;
  }
  /// Runs the task to its end without moving time on.
  template <typename T>
  T end(Task<T> task) {
    return taken(start(std::move(task)));
  }
  template <typename T>
  static T taken(const std::shared_ptr<Outcome<T>>& outcome) {
    if (!outcome->isSet()) throw std::runtime_error("the task has not ended");
    return outcome->take();
  }
  /// How it ended, in words: the value, the failure, or that it goes on.
  static std::string told(const std::shared_ptr<Outcome<JSONValue>>& outcome) {
    if (!outcome->isSet()) return "waiting";
    JSONValue value;
    const std::string failure = failureOf([&] { value = outcome->take(); });
    return failure == "no failure" ? value.encode() : failure;
  }
  static std::string told(const std::shared_ptr<Outcome<void>>& outcome) {
    return outcome->isSet() ? failureOf([&] { outcome->take(); }) : "waiting";
  }

  void settle() { scheduler.runFor(std::chrono::nanoseconds(0)); }
  void pass(std::chrono::nanoseconds time) { scheduler.runFor(time); }

  /// The methods of what all processes have read, in order; "" for an answer.
  std::vector<std::string> methods() const {
    std::vector<std::string> all;
    for (std::size_t index = 0; index < server.started(); ++index) {
      for (std::string& method : server.process(index).methodsRead()) all.push_back(std::move(method));
    }
    return all;
  }

  SimulatedScheduler& scheduler;
  InMemoryServer server;
  detail::AppServerRPCClientConfiguration configuration;
  std::function<void(InMemoryProcess&)> onStart;
  /// Runs in place of an exit with status 0.
  std::function<void(InMemoryProcess&)> onInputEnd;

 private:
  void respond(InMemoryProcess& process, const JSONValue& message) {
    const JSONValue* method = message.find("method");
    const auto found = method ? replies_.find(std::string(method->stringValue().value_or(""))) : replies_.end();
    if (found == replies_.end()) return;
    const Reply copy = found->second;
    copy(process, message);
  }

  InMemoryBlockingWork blockingWork_;
  std::map<std::string, Reply> replies_;
};

/// The same scenario under several orders of what can happen at the same time.
template <typename Scenario>
void withServers(Scenario scenario) {
  constexpr std::uint64_t orders = 10;
  underSeeds(orders, [&](SimulatedScheduler& scheduler) {
    SimulatedServer server(scheduler);
    scenario(server);
  });
}

inline constexpr const char* stdinIsUnavailable = "stream error: Ormel app-server stdin is unavailable";
inline constexpr const char* unexpectedEnd = "stream error: Ormel app-server terminated unexpectedly";
inline constexpr const char* clientTerminated = "stream error: App-server RPC client terminated";

}  // namespace ormel::testing
