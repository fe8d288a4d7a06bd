#pragma once

#include <string>

#include "ormel-simulator/Agent/AgentThreadStore.h"

namespace ormel::simulator {

/// The thread of that id. Fails with a `Refusal` that says what there is instead.
AgentThread& knownThread(AgentThreadStore& store, const std::string& id);

/// The one that "threadId" of the params names.
AgentThread& knownThread(AgentThreadStore& store, const JSONValue& params);

/// The text under the key. Fails with `Refusal` if there is none, or an empty one.
std::string requiredText(const JSONValue& params, const char* key);

}  // namespace ormel::simulator
