#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-simulator/Scenario/Message.h"
#include "ormel-simulator/Scenario/Recorder.h"
#include "ormel-simulator/Scenario/Wire.h"

namespace ormel::simulator {

/// The client, as the agent talks to it. Failures of writing are `std::system_error`: the client is gone.
class AgentClient {
 public:
  /// Called with the result of a request, or with nothing if the client refused it.
  using AnswerHandler = std::function<void(const std::optional<JSONValue>& result)>;

  AgentClient(Wire& wire, Recorder& recorder) : wire_(wire), recorder_(recorder) {}

  /// Methods of notifications that the client does not want.
  void setUnwanted(std::set<std::string> methods) { unwanted_ = std::move(methods); }

  void notify(const std::string& method, const JSONValue& params);
  void reply(const JSONValue& id, const JSONValue& result);
  void refuse(const JSONValue& id, int code, const std::string& message);

  /// Sends a request. The handler is called at most once, by `takeAnswer`.
  int ask(const std::string& method, const JSONValue& params, AnswerHandler handler);

  /// Forgets a request: an answer that still comes is dropped.
  void withdraw(int request) { asked_.erase(request); }

  /// An answer that nobody waits for is dropped.
  void takeAnswer(const Message& answer);

  /// Writes lines that are complete already.
  void write(std::string_view lines) { write(Stream::output, lines); }
  /// Tells people what went wrong apart from any request: as a warning, and on standard error.
  void complain(const std::string& text);
  void writeError(std::string_view text) { write(Stream::error, text); }

 private:
  void send(const JSONValue& message) { write(message.encode() + "\n"); }
  void write(Stream stream, std::string_view bytes);

  Wire& wire_;
  Recorder& recorder_;
  std::set<std::string> unwanted_;
  std::map<int, AnswerHandler> asked_;
  int lastRequest_ = 0;
};

}  // namespace ormel::simulator
