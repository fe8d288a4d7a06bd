#include "ormel-simulator/Requests/AgentClient.h"

#include <utility>

namespace ormel::simulator {

void AgentClient::notify(const std::string& method, const JSONValue& params) {
  if (!unwanted_.contains(method)) send(JSONValue::object({{"method", method}, {"params", params}}));
}

void AgentClient::reply(const JSONValue& id, const JSONValue& result) {
  send(JSONValue::object({{"id", id}, {"result", result}}));
}

void AgentClient::refuse(const JSONValue& id, int code, const std::string& message) {
  send(JSONValue::object({{"id", id}, {"error", JSONValue::object({{"code", code}, {"message", message}})}}));
}

int AgentClient::ask(const std::string& method, const JSONValue& params, AnswerHandler handler) {
  asked_.emplace(++lastRequest_, std::move(handler));
  send(JSONValue::object({{"id", lastRequest_}, {"method", method}, {"params", params}}));
  return lastRequest_;
}

void AgentClient::takeAnswer(const Message& answer) {
  for (auto entry = asked_.begin(); entry != asked_.end(); ++entry) {
    if (answer.id != JSONValue(entry->first)) continue;
    const AnswerHandler handler = std::move(entry->second);
    asked_.erase(entry);
    handler(answer.kind == Message::Kind::answer ? answer.content : std::nullopt);
    return;
  }
}

void AgentClient::complain(const std::string& text) {
  notify("warning", JSONValue::object({{"message", text}}));
  writeError("ormel-simulator: " + text + "\n");
}

void AgentClient::write(Stream stream, std::string_view bytes) {
  recorder_.recordSent(stream == Stream::output ? "stdout" : "stderr", bytes);
  wire_.write(stream, bytes);
}

}  // namespace ormel::simulator
