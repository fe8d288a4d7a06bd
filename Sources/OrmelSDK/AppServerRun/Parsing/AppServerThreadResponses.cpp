#include "OrmelSDK/AppServerRun/Parsing/AppServerThreadResponses.h"

#include <utility>

#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Coding/JSONMembers.h"

namespace ormel::detail {

ThreadStartedEvent parseThreadStartedEvent(const JSONValue& fromThreadResponse) {
  const JSONObject* const members = fromThreadResponse.objectValue();
  const JSONObject* const thread = members ? objectMember(*members, {"thread"}) : nullptr;
  if (!thread) throw ThreadRunError::streamError("Invalid thread response from app-server");
  ThreadStartedEvent event = parseThreadStartedEvent(*thread);
  event.instructionSources = textsOf(arrayMember(*members, {"instructionSources", "instruction_sources"}));
  return event;
}

ThreadStartedEvent parseThreadStartedEvent(const JSONObject& fromThreadObject) {
  auto threadID = textMember(fromThreadObject, {"id"});
  if (!threadID) throw ThreadRunError::streamError("Invalid thread object from app-server");
  ThreadStartedEvent event;
  event.threadID = *std::move(threadID);
  event.forkedFromID = textMember(fromThreadObject, {"forkedFromId", "forked_from_id"});
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
