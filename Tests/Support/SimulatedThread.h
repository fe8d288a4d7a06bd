#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "OrmelSDK/Conversation.h"
#include "OrmelSDK/Thread.h"
#include "Support/SimulatedRun.h"

namespace ormel::testing {

/// The server of `SimulatedRun` behind a `Thread`.
///
///     SimulatedThread server(scheduler);
///     const auto heard = server.listen(server.end(server.thread->runStreamed("hello")).events);
///     server.completeTurn();
///     EXPECT_THAT(*heard, ElementsAre("thread.started t1", "turn.completed", "end"));
class SimulatedThread : public SimulatedRun {
 public:
  explicit SimulatedThread(SimulatedScheduler& onScheduler, std::optional<std::string> threadID = std::nullopt,
                           const Options& options = Options())
      : SimulatedRun(onScheduler, options) {
    // A thread makes a run of its own, when it needs one.
    run.reset();
    auto conversation = std::make_shared<detail::Conversation>(configuration(options), std::move(threadID), services());
    conversation_ = conversation;
    thread.emplace(std::move(conversation));
  }
  ~SimulatedThread() {
    drop();
    EXPECT_TRUE(conversation_.expired()) << "nothing but its handles keeps an idle thread";
  }

  /// Lets go of the thread.
  void drop() {
    thread.reset();
    settle();
  }

  /// Whether the thread knows of an operation of its own.
  bool isBusy() const {
    const auto conversation = conversation_.lock();
    return conversation && conversation->currentOperation().has_value();
  }
  /// The operation that the thread knows of.
  std::optional<std::uint64_t> operation() const {
    const auto known = conversation_.lock()->currentOperation();
    return known ? std::optional(known->generation) : std::nullopt;
  }
  bool isGone() const { return conversation_.expired(); }
  std::shared_ptr<Run> runOfThread() const { return conversation_.lock()->reusableRun(); }

  /// The param of the last request of the method.
  JSONValue lastParam(std::string_view method, std::string_view key) {
    const JSONValue params = lastParams(method);
    return *params.find(key);
  }

  /// Awaits the start of the operation, and follows its events.
  Heard follow(Task<StreamedTurn> starting) { return listen(end(std::move(starting)).events); }

  std::optional<Thread> thread;

 private:
  std::weak_ptr<detail::Conversation> conversation_;
};

}  // namespace ormel::testing
