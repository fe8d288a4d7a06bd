#pragma once

#include <string>

#include "OrmelSDK/Events/ThreadStateEvents.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::detail {

/// Reads the response to a request that starts, resumes or forks a thread. Fails with `ThreadRunError` of the kind
/// `streamError` if it names no thread.
ThreadStartedEvent parseThreadStartedEvent(const JSONValue& fromThreadResponse);

/// Reads a thread object, which does not tell the sources of instructions. Fails likewise.
ThreadStartedEvent parseThreadStartedEvent(const JSONObject& fromThreadObject);

/// The id of the turn that a response to "turn/start" or "review/start" names. It may be empty. Fails likewise.
std::string parseTurnID(const JSONValue& turnStartResponse);

}  // namespace ormel::detail
