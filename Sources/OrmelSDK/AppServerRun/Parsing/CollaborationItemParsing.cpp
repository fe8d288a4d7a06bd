#include "OrmelSDK/AppServerRun/Parsing/CollaborationItemParsing.h"

#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "OrmelSDK/AppServerRun/Parsing/ThreadItemWords.h"
#include "OrmelSDK/Coding/JSONMembers.h"

namespace ormel::detail {

namespace {

using AgentsStates = std::map<std::string, CollabAgentState>;

std::vector<std::string> receiverThreadIDs(const JSONObject& object) {
  auto ids = textsOf(arrayMember(object, {"receiverThreadIds", "receiver_thread_ids"}));
  if (!ids.empty()) return ids;
  auto single = textMember(object, {"receiverThreadId", "receiver_thread_id", "newThreadId", "new_thread_id"});
  if (single) ids.push_back(*std::move(single));
  return ids;
}

AgentsStates statesIn(const JSONArray& list) {
  AgentsStates states;
  for (const JSONValue& element : list) {
    const JSONObject* object = element.objectValue();
    auto thread = object ? textMember(*object, {"threadId", "thread_id"}) : std::nullopt;
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
  const JSONValue* listed = firstMember(object, {"agentsStates", "agents_states"}, [](const JSONValue& value) {
    return value.arrayValue() || value.objectValue() ? &value : nullptr;
  });
  if (!listed) return {};
  if (const auto* list = listed->arrayValue()) return statesIn(*list);
  return statesIn(*listed->objectValue());
}

/// One state for the agents that are named elsewhere in the object.
AgentsStates commonState(const JSONObject& object, const std::vector<std::string>& receivers) {
  const auto state = firstMember(object, {"agentStatus", "agent_status"}, collabAgentState);
  if (!state) return {};
  AgentsStates states;
  for (const auto& receiver : receivers) states.insert_or_assign(receiver, *state);
  if (receivers.empty()) {
    if (auto agent = textMember(object, {"agentId", "agent_id"})) states.emplace(*std::move(agent), *state);
  }
  return states;
}

}  // namespace

std::optional<CollabAgentState> collabAgentState(const JSONValue& from) {
  if (const auto word = from.stringValue()) return CollabAgentState{collabAgentStatus(*word), std::nullopt};
  const JSONObject* object = from.objectValue();
  const auto word = object ? textViewMember(*object, {"status", "state"}) : std::nullopt;
  if (!word) return std::nullopt;
  return CollabAgentState{collabAgentStatus(*word), textMember(*object, {"message"})};
}

CollabAgentToolCallItem parseCollabAgentToolCallItem(std::string id, const JSONObject& object) {
  CollabAgentToolCallItem item;
  item.id = std::move(id);
  item.tool = collabAgentTool(textViewMember(object, {"tool"}).value_or("unknown"));
  item.status = collabAgentToolCallStatus(textViewMember(object, {"status"}).value_or("failed"));
  item.senderThreadId = textMember(object, {"senderThreadId", "sender_thread_id"}, "");
  item.receiverThreadIds = receiverThreadIDs(object);
  item.prompt = textMember(object, {"prompt"});
  item.model = textMember(object, {"model"});
  if (const auto effort = textViewMember(object, {"reasoningEffort", "reasoning_effort"})) {
    item.reasoningEffort = ModelReasoningEffort(*effort);
  }
  item.agentsStates = listedStates(object);
  if (item.agentsStates.empty()) item.agentsStates = commonState(object, item.receiverThreadIds);
  return item;
}

SubAgentActivityItem parseSubAgentActivityItem(std::string id, const JSONObject& object) {
  return {std::move(id), subAgentActivityKind(textViewMember(object, {"kind"})),
          textMember(object, {"agentThreadId", "agent_thread_id"}), textMember(object, {"agentPath", "agent_path"})};
}

}  // namespace ormel::detail
