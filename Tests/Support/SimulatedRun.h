#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun.h"
#include "Support/ConcurrencySchedulers.h"
#include "Support/InMemoryServer.h"
#include "Support/RunTranscript.h"

namespace ormel::testing {

inline constexpr const char* operationNotCurrent = "stream error: Prepared app-server operation is no longer current";

/// A wait that lasts until the gate is opened. It stands alone: the closure of a coroutine would go with the run.
inline Task<void> heldOpen(std::shared_ptr<OneShot<void>> gate) { co_await gate->wait(); }

/// The events of an operation alone.
inline Task<EventChannel<ThreadEvent>> channelOf(Task<detail::StartedOperation> starting) {
  detail::StartedOperation started = co_await std::move(starting);
  co_return std::move(started.events);
}

/// A run of the engine in a simulation, and a server that answers every request of an operation until it is told
/// otherwise: the threads are "t1", or the one resumed, or "f1" for a fork, or "r1" for a review; the turn is "u1".
///
///     inManyOrders([](SimulatedScheduler& scheduler) {
///       SimulatedRun engine(scheduler);
///       const auto heard = engine.startTurn();
///       engine.completeTurn();
///       EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
///     });
///
/// Nothing moves time on but what says so. At its end it releases the run, and fails the test if anything is left.
class SimulatedRun {
 public:
  using Run = detail::AppServerTurnRun;
  using OperationRequest = detail::OperationRequest;
  using Reply = std::function<void(InMemoryProcess&, const JSONValue& request)>;
  /// The events of a channel so far, in words.
  using Heard = std::shared_ptr<std::vector<std::string>>;

  struct Options {
    Options() { ormel.selectedOrmelPathOverride = true; }

    ThreadOptions thread;
    OrmelOptions ormel;
  };

  explicit SimulatedRun(SimulatedScheduler& onScheduler, const Options& options = Options())
      : scheduler(onScheduler), server(onScheduler), blockingWork_(onScheduler) {
    InMemoryServerScript script;
    script.onMessage = [this](InMemoryProcess& process, const JSONValue& message) { respond(process, message); };
    script.onClientWrite = [this](InMemoryProcess&, const std::string& line) {
      if (onClientWrite) onClientWrite(line);
    };
    server.setScript(std::move(script));
    answer("initialize", "{}");
    answer("thread/start", R"({"thread":{"id":"t1"}})");
    answer("thread/fork", R"({"thread":{"id":"f1"}})");
    answer("turn/start", R"({"turn":{"id":"u1"}})");
    answer("review/start", R"({"reviewThreadId":"r1","turn":{"id":"u1"}})");
    for (const char* method : {"thread/compact/start", "turn/interrupt", "turn/steer"}) answer(method, "{}");
    reply("thread/resume", [](InMemoryProcess& process, const JSONValue& request) {
      const JSONValue thread = JSONValue::object({{"id", *request.find("params")->find("threadId")}});
      process.answer(request, JSONValue::object({{"thread", thread}}));
    });
    run = Run::create(configuration(options), services());
  }
  SimulatedRun(const SimulatedRun&) = delete;
  SimulatedRun& operator=(const SimulatedRun&) = delete;
  ~SimulatedRun() {
    if (run) release();
    run.reset();
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
  void refuse(const std::string& method, const std::string& message) {
    reply(method, [message](InMemoryProcess& process, const JSONValue& request) { process.refuse(request, message); });
  }
  /// Keeps requests of the method unanswered; `answerKept` answers the first.
  void keep(const std::string& method) {
    reply(method, [this](InMemoryProcess&, const JSONValue& request) { kept_.push_back(request); });
  }
  void answerKept(std::string_view result = "{}") {
    process().answer(takeKept(), JSONValue::decode(result));
    settle();
  }
  JSONValue takeKept() {
    const JSONValue request = kept_.at(0);
    kept_.erase(kept_.begin());
    return request;
  }
  std::size_t kept() const { return kept_.size(); }

  InMemoryProcess& process() { return server.lastProcess(); }
  void write(std::string_view bytes) {
    process().write(bytes);
    settle();
  }
  void notify(std::string_view method, std::string_view params) {
    process().notify(method, JSONValue::decode(params));
    settle();
  }
  void completeTurn(std::string_view status = "completed") {
    notify("turn/completed", R"({"threadId":"t1","turn":{"id":"u1","status":")" + std::string(status) + R"("}})");
  }

  // The application's actions.

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

  Task<detail::StartedOperation> turn(std::optional<std::string> existingThreadID = std::nullopt,
                                      std::optional<std::uint64_t> prepared = std::nullopt) {
    return run->start(OperationRequest::turn(std::move(existingThreadID), "hello", TurnOptions()), prepared);
  }
  Task<EventChannel<ThreadEvent>> review() {
    return channelOf(
        run->start(OperationRequest::review("t1", ReviewTarget::uncommittedChanges(), ReviewDelivery::inline_)));
  }
  Task<EventChannel<ThreadEvent>> compaction() { return channelOf(run->start(OperationRequest::compaction("t1"))); }
  Task<EventChannel<ThreadEvent>> forkTurn() {
    return channelOf(run->start(OperationRequest::ephemeralForkTurn("t1", "hello", "be brief", TurnOptions())));
  }
  Task<void> steer(std::optional<std::uint64_t> expected = std::nullopt) {
    return run->steer("more", TurnOptions(), expected);
  }

  /// Starts a turn and follows its events.
  Heard startTurn() { return listen(end(turn()).events); }
  Heard listen(EventChannel<ThreadEvent> events) {
    auto heard = std::make_shared<std::vector<std::string>>();
    start(noted(std::move(events), heard));
    return heard;
  }
  void interrupt(std::optional<std::uint64_t> expected = std::nullopt) { start(run->interruptFromSignal(expected)); }
  void release() { end(run->release()); }

  // Progress, and the state that can be seen.

  /// Lets happen all that takes no time.
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
  /// The last message of the method that the latest process has read.
  JSONValue lastMessage(std::string_view method) {
    const auto& messages = process().messagesRead();
    for (auto message = messages.rbegin(); message != messages.rend(); ++message) {
      const JSONValue* name = message->find("method");
      if (name && *name == JSONValue(method)) return *message;
    }
    throw std::runtime_error("no such message was read");
  }
  JSONValue lastParams(std::string_view method) {
    const JSONValue message = lastMessage(method);
    return *message.find("params");
  }

  std::string state() const {
    const auto kind = run->stream().streamCompletion().kind();
    if (kind == detail::StreamCompletion::Kind::finished) return "finished";
    return kind == detail::StreamCompletion::Kind::failed ? "failed" : "pending";
  }

  SimulatedScheduler& scheduler;
  InMemoryServer server;
  std::shared_ptr<Run> run;
  /// Called within the call that writes a line, on the run's strand.
  std::function<void(const std::string& line)> onClientWrite;

 protected:
  static detail::AppServerTurnRunConfiguration configuration(const Options& options) {
    detail::AppServerTurnRunConfiguration configuration;
    configuration.executablePath = "/opt/ormel";
    configuration.ormelOptions = options.ormel;
    configuration.threadOptions = options.thread;
    return configuration;
  }
  detail::ServerServices services() { return {scheduler, server, blockingWork_}; }

 private:
  void respond(InMemoryProcess& process, const JSONValue& message) {
    const JSONValue* method = message.find("method");
    const auto found = method ? replies_.find(std::string(method->stringValue().value_or(""))) : replies_.end();
    if (found == replies_.end()) return;
    const Reply copy = found->second;
    copy(process, message);
  }

  static Task<void> noted(EventChannel<ThreadEvent> events, Heard heard) {
    try {
      while (const auto event = co_await events.next()) heard->push_back(inWords(*event));
      heard->emplace_back("end");
    } catch (...) {
      heard->push_back(inWords(std::current_exception()));
    }
  }

  InMemoryBlockingWork blockingWork_;
  std::map<std::string, Reply> replies_;
  std::vector<JSONValue> kept_;
};

/// The same scenario under several orders of what can happen at the same time.
template <typename Scenario>
void inManyOrders(Scenario scenario) {
  constexpr std::uint64_t orders = 10;
  underSeeds(orders, scenario);
}

}  // namespace ormel::testing
