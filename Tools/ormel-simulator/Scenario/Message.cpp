#include "ormel-simulator/Scenario/Message.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

#include "OrmelSDK/JSON/CodingErrors.h"

namespace ormel::simulator {

namespace {

bool isUsableID(const JSONValue& id) { return id.stringValue() || isWholeNumber(id); }

std::optional<JSONValue> member(const JSONValue& object, std::string_view key) {
  const JSONValue* found = object.find(key);
  return found ? std::optional(*found) : std::nullopt;
}

std::string unknownMember(const JSONValue& object, std::initializer_list<std::string_view> known) {
  const auto& members = *object.objectValue();
  for (const auto& entry : members) {
    if (std::find(known.begin(), known.end(), entry.key) == known.end()) {
      return "it has a member \"" + std::string(entry.key) + "\", which such a message does not have";
    }
  }
  return {};
}

void readCall(Message& message, const JSONValue& whole, const JSONValue& method) {
  const auto name = method.stringValue();
  if (!name || name->empty()) {
    message.fault = "its method is no text, or empty";
    return;
  }
  message.method = std::string(*name);
  message.content = member(whole, "params");
  message.fault = unknownMember(whole, {"id", "method", "params"});
  message.kind = whole.find("id") ? Message::Kind::request : Message::Kind::notification;
}

void readAnswer(Message& message, const JSONValue& whole) {
  const bool isError = whole.find("error") != nullptr;
  if (isError == (whole.find("result") != nullptr)) {
    message.fault = "it has neither a method nor exactly one of result and error";
    return;
  }
  message.content = member(whole, isError ? "error" : "result");
  message.fault = whole.find("id") ? unknownMember(whole, {"id", "result", "error"}) : "it is an answer without an id";
  message.kind = isError ? Message::Kind::errorAnswer : Message::Kind::answer;
}

}  // namespace

bool isWholeNumber(const JSONValue& value) {
  const auto number = value.numberValue();
  return number && *number == std::trunc(*number);
}

Message readMessage(std::string line) {
  Message message;
  message.line = std::move(line);
  try {
    message.whole = JSONValue::decode(message.line);
  } catch (const DecodingError& error) {
    message.fault = "it is not JSON: " + error.description();
    return message;
  }
  const JSONValue& whole = *message.whole;
  if (!whole.objectValue()) {
    message.fault = "it is no JSON object";
    return message;
  }
  message.id = member(whole, "id").value_or(JSONValue());
  if (const JSONValue* method = whole.find("method")) {
    readCall(message, whole, *method);
  } else {
    readAnswer(message, whole);
  }
  if (message.fault.empty() && whole.find("id") && !isUsableID(message.id)) {
    message.fault = "its id is neither a whole number nor a text";
  }
  if (!message.fault.empty()) message.kind = Message::Kind::malformed;
  return message;
}

}  // namespace ormel::simulator
