#include "ormel-simulator/Scenario/Conversation.h"

#include <algorithm>

#include "ormel-simulator/Scenario/ExampleMatcher.h"

namespace ormel::simulator {

namespace {

std::string kindInWords(Message::Kind kind) {
  switch (kind) {
    case Message::Kind::request:
      return "a request";
    case Message::Kind::notification:
      return "a notification";
    case Message::Kind::answer:
      return "an answer with a result";
    case Message::Kind::errorAnswer:
      return "an answer with an error";
    case Message::Kind::malformed:
      break;
  }
  return "no message of the protocol";
}

Judgement unconcerned(std::string difference) { return {false, std::move(difference)}; }

}  // namespace

Judgement Conversation::judge(const Expectation& expectation, const Message& message) {
  if (expectation.kind == Expectation::Kind::message && message.whole) {
    auto found = difference(*expectation.example, *message.whole, "message", variables_);
    return {!found, found};
  }
  if (message.kind == Message::Kind::malformed) return unconcerned(message.fault);
  switch (expectation.kind) {
    case Expectation::Kind::request:
    case Expectation::Kind::notification:
      return judgeCall(expectation, message);
    case Expectation::Kind::answer:
    case Expectation::Kind::errorAnswer:
      return judgeAnswer(expectation, message);
    case Expectation::Kind::message:
    case Expectation::Kind::endOfInput:
      break;
  }
  return unconcerned("it came before the end of the input");
}

Judgement Conversation::judgeCall(const Expectation& expectation, const Message& message) {
  const auto wanted =
      expectation.kind == Expectation::Kind::request ? Message::Kind::request : Message::Kind::notification;
  if (message.kind != wanted) return unconcerned("it is " + kindInWords(message.kind));
  if (expectation.method != "*" && expectation.method != message.method) {
    return unconcerned("the method is " + message.method + " instead of " + expectation.method);
  }
  if (expectation.withoutParams && message.content) return {true, "there are params"};
  return {true, contentDifference(expectation, message, "params")};
}

Judgement Conversation::judgeAnswer(const Expectation& expectation, const Message& message) {
  const bool isAnswer = message.kind == Message::Kind::answer || message.kind == Message::Kind::errorAnswer;
  if (!isAnswer) return unconcerned("it is " + kindInWords(message.kind));
  const auto request = serverRequests_.find(expectation.name);
  if (request == serverRequests_.end()) return unconcerned("the server has asked no such request so far");
  if (request->second != message.id) {
    return unconcerned("the id is " + message.id.encode() + " instead of " + request->second.encode());
  }
  const auto wanted =
      expectation.kind == Expectation::Kind::answer ? Message::Kind::answer : Message::Kind::errorAnswer;
  if (message.kind != wanted) return {true, "it is " + kindInWords(message.kind)};
  return {true, contentDifference(expectation, message, wanted == Message::Kind::answer ? "result" : "error")};
}

std::optional<std::string> Conversation::contentDifference(const Expectation& expectation, const Message& message,
                                                           const std::string& path) {
  if (!expectation.example) return std::nullopt;
  if (!message.content) return "there are no " + path;
  return difference(*expectation.example, *message.content, path, variables_);
}

void Conversation::noteClientRequest(const std::string& name, const JSONValue& id) {
  waiting_.push_back(id);
  if (name.empty()) return;
  clientRequests_.insert_or_assign(name, id);
  variables_.set(name, id);
}

std::optional<JSONValue> Conversation::takeClientRequest(const std::string& name) {
  std::optional<JSONValue> id;
  if (const auto named = clientRequests_.find(name); named != clientRequests_.end()) {
    id = named->second;
  } else if (name.empty() && !waiting_.empty()) {
    id = waiting_.back();
  }
  if (id) waiting_.erase(std::remove(waiting_.begin(), waiting_.end(), *id), waiting_.end());
  return id;
}

JSONValue Conversation::noteServerRequest(const std::string& name, const std::optional<JSONValue>& id) {
  const JSONValue used = id ? *id : JSONValue(++lastServerID_);
  // The latest one is also found without a name.
  serverRequests_.insert_or_assign("", used);
  if (!name.empty()) {
    serverRequests_.insert_or_assign(name, used);
    variables_.set(name, used);
  }
  return used;
}

}  // namespace ormel::simulator
