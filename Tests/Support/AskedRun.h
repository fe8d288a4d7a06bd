#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Support/SimulatedRun.h"

namespace ormel::testing {

/// A running turn, "u1" of the thread "t1", whose server asks the application.
///
///     SimulatedScheduler scheduler(1);
///     AskedRun asked(scheduler, options);
///     asked.ask("attestation/generate", "{}");
///     EXPECT_EQ(asked.answers(), jsonList({R"({"id":"q1","result":{"token":""}})"}));
class AskedRun {
 public:
  explicit AskedRun(SimulatedScheduler& scheduler, const ThreadOptions& options = ThreadOptions())
      : engine(scheduler, withOptions(options)) {
    startTurn();
  }

  SimulatedRun engine;

  /// Starts a turn, whose events are added to those of the turns before it.
  void startTurn() { engine.start(noted(engine.end(engine.turn()).events, told_)); }

  /// Asks and lets happen what takes no time.
  void ask(std::string_view method, std::string_view params, const JSONValue& id = "q1") {
    engine.process().request(id, method, JSONValue::decode(params));
    engine.settle();
  }

  /// The client's answers, as opposed to its own requests and notifications: to all processes, in order.
  std::vector<JSONValue> answers() const {
    std::vector<JSONValue> all;
    for (std::size_t index = 0; index < engine.server.started(); ++index) {
      for (const std::string& text : engine.server.process(index).linesWritten()) {
        const JSONValue message = JSONValue::decode(text);
        if (!message.find("method")) all.push_back(message);
      }
    }
    return all;
  }

  /// The events after the first "thread.started".
  std::vector<ThreadEvent> events() const { return {told_->events.begin() + 1, told_->events.end()}; }
  /// The same in words, with the ends of the turns.
  std::vector<std::string> words() const { return {told_->words.begin() + 1, told_->words.end()}; }

 private:
  struct Told {
    std::vector<ThreadEvent> events;
    std::vector<std::string> words;
  };

  static SimulatedRun::Options withOptions(const ThreadOptions& options) {
    SimulatedRun::Options all;
    all.thread = options;
    return all;
  }

  static Task<void> noted(EventChannel<ThreadEvent> events, std::shared_ptr<Told> told) {
    try {
      while (const auto event = co_await events.next()) {
        told->events.push_back(*event);
        told->words.push_back(inWords(*event));
      }
      told->words.emplace_back("end");
    } catch (...) {
      told->words.push_back(inWords(std::current_exception()));
    }
  }

  std::shared_ptr<Told> told_ = std::make_shared<Told>();
};

inline std::vector<JSONValue> jsonList(const std::vector<std::string>& texts) {
  std::vector<JSONValue> all;
  for (const std::string& text : texts) all.push_back(JSONValue::decode(text));
  return all;
}

/// The one answer that a request gets, after which the turn goes on: the object with its "result" or "error".
inline JSONValue answerTo(std::string_view method, std::string_view params,
                          const ThreadOptions& options = ThreadOptions()) {
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler, options);
  asked.ask(method, params);
  const auto answers = asked.answers();
  EXPECT_EQ(answers.size(), 1U) << method;
  EXPECT_EQ(asked.engine.state(), "pending") << method;
  EXPECT_EQ(asked.engine.run->serverRequests().count(), 0U) << method;
  if (answers.empty()) return JSONValue();
  EXPECT_EQ(*answers.front().find("id"), JSONValue("q1"));
  return answers.front();
}

/// The result in that answer; null if it is an error.
inline JSONValue resultOf(std::string_view method, std::string_view params,
                          const ThreadOptions& options = ThreadOptions()) {
  const JSONValue answer = answerTo(method, params, options);
  const JSONValue* result = answer.find("result");
  EXPECT_TRUE(result) << answer.encode();
  return result ? *result : JSONValue();
}

/// How a turn ends on a request: what is heard last.
inline std::string endOn(std::string_view method, std::string_view params,
                         const ThreadOptions& options = ThreadOptions()) {
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler, options);
  asked.ask(method, params);
  EXPECT_EQ(asked.engine.state(), "failed") << method;
  EXPECT_TRUE(asked.answers().empty()) << method;
  return asked.words().empty() ? "nothing" : asked.words().back();
}

}  // namespace ormel::testing
