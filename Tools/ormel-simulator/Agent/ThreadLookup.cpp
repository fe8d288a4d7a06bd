#include "ormel-simulator/Agent/ThreadLookup.h"

#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

AgentThread& knownThread(AgentThreadStore& store, const std::string& id) {
  AgentThread* found = store.find(id);
  if (!found) throw Refusal(invalidRequest, "thread not found: " + id + "; " + store.summary());
  return *found;
}

AgentThread& knownThread(AgentThreadStore& store, const JSONValue& params) {
  return knownThread(store, textMember(params, "threadId").value_or(""));
}

std::string requiredText(const JSONValue& params, const char* key) {
  const auto text = textMember(params, key);
  if (!text || text->empty()) throw Refusal(invalidParams, std::string(key) + " must be a text that is not empty");
  return *text;
}

}  // namespace ormel::simulator
