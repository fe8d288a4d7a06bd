#include "OrmelSDK/AppServerRun/Parsing/AppServerThreadResponses.h"

#include <utility>

#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Coding/JSONMembers.h"

namespace ormel::detail {

ThreadStartedEvent parseThreadStartedEventFromThreadResponse(const JSONValue& response) {
  const JSONObject* const members = response.objectValue();
  const JSONValue* const thread = members ? members->find("thread") : nullptr;
  if (!thread || !thread->objectValue()) throw ThreadRunError::streamError("Invalid thread response from app-server");
  ThreadStartedEvent event = parseThreadStartedEventFromThreadObject(*thread);
  event.instructionSources = textsOf(arrayMember(*members, {"instructionSources", "instruction_sources"}));
  return event;
}

ThreadStartedEvent parseThreadStartedEventFromThreadObject(const JSONValue& thread) {
  const JSONObject* const members = thread.objectValue();
  auto threadID = members ? textMember(*members, {"id"}) : std::nullopt;
  if (!threadID) throw ThreadRunError::streamError("Invalid thread object from app-server");
  ThreadStartedEvent event;
  event.threadID = *std::move(threadID);
  event.forkedFromID = textMember(*members, {"forkedFromId", "forked_from_id"});
  return event;
}

std::string parseTurnID(const JSONValue& turnStartResponse) {
  const JSONValue* const turn = turnStartResponse.find("turn");
  const JSONObject* const members = turn ? turn->objectValue() : nullptr;
  auto turnID = members ? textMember(*members, {"id"}) : std::nullopt;
  if (!turnID) throw ThreadRunError::streamError("Invalid turn/start response from app-server");
  return *std::move(turnID);
}

}  // namespace ormel::detail
