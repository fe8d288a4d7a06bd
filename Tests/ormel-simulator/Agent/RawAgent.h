#pragma once

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"
#include "Support/ChildProgram.h"
#include "Support/SimulatorScenario.h"
#include "ormel-simulator/Requests/JSONMembers.h"

namespace ormel::simulator {

/// The agent, spoken to line by line.
class RawAgent {
 public:
  /// Without a state, the agent forgets.
  explicit RawAgent(int pace = 0, const std::string& state = "") : RawAgent(environmentOf(pace, state)) {}

  explicit RawAgent(std::vector<std::string> environment)
      : child_(testing::SimulatorScenario::executable(), options(std::move(environment))) {}

  testing::ChildProgram& child() { return child_; }

  void send(const std::string& line) { child_.write(line + "\n"); }

  int ask(const std::string& method, JSONObjectBuilder params = {}) {
    send(JSONValue::object({{"id", ++lastID_}, {"method", method}, {"params", params.build()}}).encode());
    return lastID_;
  }

  void answer(const JSONValue& request, const JSONValue& result) {
    send(JSONValue::object({{"id", anyMember(request, "id")}, {"result", result}}).encode());
  }

  JSONValue receive() {
    const std::string line = child_.readLine();
    if (line.empty()) throw std::runtime_error("the agent has ended");
    return JSONValue::decode(line);
  }

  /// The next message with the method, past all others.
  JSONValue await(const std::string& method, const std::string& thread = "") {
    while (true) {
      JSONValue message = receive();
      const JSONValue params = anyMember(message, "params");
      const bool concerned = thread.empty() || textMember(params, "threadId") == thread;
      if (concerned && textMember(message, "method") == method) return message;
    }
  }

  /// The answer to the request, past all other messages.
  JSONValue awaitAnswer(int id) {
    while (true) {
      JSONValue message = receive();
      if (anyMember(message, "id") == JSONValue(id) && !message.find("method")) return message;
    }
  }

  JSONValue result(const std::string& method, const JSONObjectBuilder& params = {}) {
    const JSONValue answer = awaitAnswer(ask(method, params));
    EXPECT_EQ(answer.find("error"), nullptr) << answer;
    return anyMember(answer, "result");
  }

  /// The code and the message of the error that the request is answered by.
  std::string refusal(const std::string& method, const JSONObjectBuilder& params = {}) {
    const JSONValue error = anyMember(awaitAnswer(ask(method, params)), "error");
    return anyMember(error, "code").encode() + " " + textMember(error, "message").value_or("");
  }

  void initialize(const JSONValue& capabilities = JSONValue::object()) {
    JSONObjectBuilder params;
    result("initialize", params.set("capabilities", capabilities));
    send(R"({"method":"initialized"})");
  }

  std::string startThread() { return threadID(result("thread/start")); }

  static std::string threadID(const JSONValue& response) {
    return textMember(anyMember(response, "thread"), "id").value_or("");
  }

  static JSONObjectBuilder turnParams(const std::string& thread, const std::string& text) {
    JSONObjectBuilder params;
    params.set("threadId", thread);
    return params.set("input", JSONValue::array({JSONValue::object({{"type", "text"}, {"text", text}})}));
  }

  /// The id of the new turn.
  std::string startTurn(const std::string& thread, const std::string& text) {
    return textMember(anyMember(result("turn/start", turnParams(thread, text)), "turn"), "id").value_or("");
  }

  /// The text of the last message of a whole turn.
  std::string say(const std::string& thread, const std::string& text) {
    startTurn(thread, text);
    return lastMessage(thread);
  }

  /// Reads to the end of the turn that runs.
  std::string lastMessage(const std::string& thread) {
    std::string said;
    while (true) {
      const JSONValue message = receive();
      const JSONValue params = anyMember(message, "params");
      if (textMember(params, "threadId") != thread) continue;
      if (textMember(message, "method") == "turn/completed") return said;
      const JSONValue item = anyMember(params, "item");
      if (textMember(item, "type") == "agentMessage") said = textMember(item, "text").value_or("");
    }
  }

  int finish() {
    child_.closeInput();
    return end();
  }

  int end() {
    child_.readRestOfOutput();
    const testing::ChildEnd end = child_.wait();
    return end.status ? *end.status : -end.signal.value_or(0);
  }

 private:
  static std::vector<std::string> environmentOf(int pace, const std::string& state) {
    return {"ORMEL_SIMULATOR_PACE_MS=" + std::to_string(pace),
            state.empty() ? "ORMEL_SIMULATOR_FORGET=1" : "ORMEL_SIMULATOR_STATE=" + state};
  }

  static testing::ChildOptions options(std::vector<std::string> environment) {
    testing::ChildOptions options;
    options.arguments = testing::SimulatorScenario::serverArguments();
    options.arguments.insert(options.arguments.end(), {"--config", "features.goals=true"});
    options.environment = std::move(environment);
    return options;
  }

  testing::ChildProgram child_;
  int lastID_ = 100;
};

inline JSONObjectBuilder ofThread(const std::string& thread) {
  JSONObjectBuilder params;
  return params.set("threadId", thread);
}

}  // namespace ormel::simulator
