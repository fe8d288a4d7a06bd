#include "OrmelSDK/AppServerRun/AppServerThreadResponses.h"

#include <optional>
#include <string_view>
#include <vector>

#include "OrmelSDK/ThreadRunError.h"

namespace ormel::detail {

namespace {

std::optional<std::string> textUnder(std::string_view key, const JSONValue& object) {
  const JSONValue* const value = object.find(key);
  const auto text = value ? value->stringValue() : std::nullopt;
  return text ? std::optional<std::string>(*text) : std::nullopt;
}

const JSONArray* arrayUnder(std::string_view key, const JSONValue& object) {
  const JSONValue* const value = object.find(key);
  return value ? value->arrayValue() : nullptr;
}

std::vector<std::string> instructionSources(const JSONValue& response) {
  const JSONArray* array = arrayUnder("instructionSources", response);
  if (!array) array = arrayUnder("instruction_sources", response);
  std::vector<std::string> sources;
  if (!array) return sources;
  for (const JSONValue& element : *array) {
    if (const auto text = element.stringValue()) sources.emplace_back(*text);
  }
  return sources;
}

}  // namespace

ThreadStartedEvent parseThreadStartedEventFromThreadResponse(const JSONValue& response) {
  const JSONValue* const thread = response.find("thread");
  if (!thread || !thread->objectValue()) throw ThreadRunError::streamError("Invalid thread response from app-server");
  ThreadStartedEvent event = parseThreadStartedEventFromThreadObject(*thread);
  event.instructionSources = instructionSources(response);
  return event;
}

ThreadStartedEvent parseThreadStartedEventFromThreadObject(const JSONValue& thread) {
  auto threadID = textUnder("id", thread);
  if (!threadID) throw ThreadRunError::streamError("Invalid thread object from app-server");
  ThreadStartedEvent event;
  event.threadID = std::move(*threadID);
  event.forkedFromID = textUnder("forkedFromId", thread);
  if (!event.forkedFromID) event.forkedFromID = textUnder("forked_from_id", thread);
  return event;
}

std::string parseTurnID(const JSONValue& turnStartResponse) {
  const JSONValue* const turn = turnStartResponse.find("turn");
  auto turnID = turn ? textUnder("id", *turn) : std::nullopt;
  if (!turnID) throw ThreadRunError::streamError("Invalid turn/start response from app-server");
  return std::move(*turnID);
}

}  // namespace ormel::detail
