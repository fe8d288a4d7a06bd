#include "OrmelSDK/AppServerRun/CollaborationItemParsing.h"

#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "OrmelSDK/AppServerRun/JSONFields.h"
#include "OrmelSDK/AppServerRun/ThreadItemWords.h"

namespace ormel::detail {

namespace {

using AgentsStates = std::map<std::string, CollabAgentState>;

std::vector<std::string> receiverThreadIDs(const JSONObject& object) {
  auto ids = textsOf(arrayUnder(object, {"receiverThreadIds", "receiver_thread_ids"}));
  if (!ids.empty()) return ids;
  auto single = ownTextUnder(object, {"receiverThreadId", "receiver_thread_id", "newThreadId", "new_thread_id"});
  if (single) ids.push_back(*std::move(single));
  return ids;
}

AgentsStates statesIn(const JSONArray& list) {
  AgentsStates states;
  for (const JSONValue& element : list) {
    const JSONObject* object = element.objectValue();
    auto thread = object ? ownTextUnder(*object, {"threadId", "thread_id"}) : std::nullopt;
    auto state = collabAgentState(element);
    if (thread && state) states.insert_or_assign(*std::move(thread), *std::move(state));
  }
  return states;
}

AgentsStates statesIn(const JSONObject& byThread) {
  AgentsStates states;
  for (const auto& [thread, value] : byThread) {
    if (auto state = collabAgentState(value)) states.insert_or_assign(std::string(thread), *std::move(state));
  }
  return states;
}

AgentsStates listedStates(const JSONObject& object) {
  const JSONValue* listed = firstUnder(object, {"agentsStates", "agents_states"}, [](const JSONValue& value) {
    return value.arrayValue() || value.objectValue() ? &value : nullptr;
  });
  if (!listed) return {};
  if (const auto* list = listed->arrayValue()) return statesIn(*list);
  return statesIn(*listed->objectValue());
}

/// One state for the agents that are named elsewhere in the object.
AgentsStates commonState(const JSONObject& object, const std::vector<std::string>& receivers) {
  const auto state = firstUnder(object, {"agentStatus", "agent_status"}, collabAgentState);
  if (!state) return {};
  AgentsStates states;
  for (const auto& receiver : receivers) states.insert_or_assign(receiver, *state);
  if (receivers.empty()) {
    if (auto agent = ownTextUnder(object, {"agentId", "agent_id"})) states.emplace(*std::move(agent), *state);
  }
  return states;
}

}  // namespace

std::optional<CollabAgentState> collabAgentState(const JSONValue& from) {
  if (const auto word = from.stringValue()) return CollabAgentState{collabAgentStatus(*word), std::nullopt};
  const JSONObject* object = from.objectValue();
  const auto word = object ? textUnder(*object, {"status", "state"}) : std::nullopt;
  if (!word) return std::nullopt;
  return CollabAgentState{collabAgentStatus(*word), ownTextUnder(*object, {"message"})};
}

CollabAgentToolCallItem parseCollabAgentToolCallItem(std::string id, const JSONObject& object) {
  CollabAgentToolCallItem item;
  item.id = std::move(id);
  item.tool = collabAgentTool(textUnder(object, {"tool"}).value_or("unknown"));
  item.status = collabAgentToolCallStatus(textUnder(object, {"status"}).value_or("failed"));
  item.senderThreadId = ownTextUnder(object, {"senderThreadId", "sender_thread_id"}, "");
  item.receiverThreadIds = receiverThreadIDs(object);
  item.prompt = ownTextUnder(object, {"prompt"});
  item.model = ownTextUnder(object, {"model"});
  if (const auto effort = textUnder(object, {"reasoningEffort", "reasoning_effort"})) {
    item.reasoningEffort = ModelReasoningEffort(*effort);
  }
  item.agentsStates = listedStates(object);
  if (item.agentsStates.empty()) item.agentsStates = commonState(object, item.receiverThreadIds);
  return item;
}

SubAgentActivityItem parseSubAgentActivityItem(std::string id, const JSONObject& object) {
  return {std::move(id), subAgentActivityKind(textUnder(object, {"kind"})),
          ownTextUnder(object, {"agentThreadId", "agent_thread_id"}),
          ownTextUnder(object, {"agentPath", "agent_path"})};
}

}  // namespace ormel::detail
