#include "ormel-simulator/Agent/ThreadEditRequests.h"

#include <string>

#include "ormel-simulator/Agent/ThreadLookup.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

JSONValue setName(AgentThreadStore& store, AgentClient& client, const JSONValue& params) {
  AgentThread& thread = knownThread(store, params);
  const std::string name = requiredText(params, "name");
  store.change(thread, [&](AgentThread& newest) {
    newest.name = name;
    newest.updatedAt = secondsNow();
  });
  client.notify("thread/name/updated", JSONValue::object({{"threadId", thread.id}, {"name", name}}));
  return JSONValue::object();
}

/// The repository after the update: a key that it lacks stays, and a null takes it away.
JSONValue updatedGitInfo(const JSONValue& current, const JSONValue& update) {
  JSONObjectBuilder members;
  for (const char* key : {"branch", "sha", "originUrl"}) {
    const JSONValue* value = update.find(key);
    if (!value) value = current.find(key);
    if (value && value->stringValue()) members.set(key, value->detached());
  }
  return members.empty() ? JSONValue() : members.build();
}

JSONValue updateMetadata(AgentThreadStore& store, const JSONValue& params) {
  AgentThread& thread = knownThread(store, params);
  const JSONValue update = anyMember(params, "gitInfo");
  if (!update.isNull() && !update.objectValue()) throw Refusal(invalidParams, "gitInfo must be an object");
  store.change(thread, [&](AgentThread& newest) {
    newest.gitInfo = updatedGitInfo(newest.gitInfo, update);
    newest.updatedAt = secondsNow();
  });
  return JSONValue::object({{"thread", thread.json(ItemsView::notLoaded)}});
}

JSONValue injectItems(AgentThreadStore& store, const JSONValue& params) {
  AgentThread& thread = knownThread(store, params);
  const JSONValue items = anyMember(params, "items").detached();
  const auto* elements = items.arrayValue();
  if (!elements) throw Refusal(invalidParams, "items must be an array");
  store.change(thread, [&](AgentThread& newest) {
    newest.injectedItems.insert(newest.injectedItems.end(), elements->begin(), elements->end());
    newest.updatedAt = secondsNow();
  });
  return JSONValue::object();
}

// Nothing is ever denied here, so there is nothing that the approval could set free.
JSONValue approveDeniedAction(AgentThreadStore& store, const JSONValue& params) {
  knownThread(store, params);
  const JSONValue event = anyMember(params, "event");
  if (!event.objectValue()) throw Refusal(invalidParams, "event must be an object");
  return JSONValue::object();
}

}  // namespace

void applyChoices(AgentThreadStore& store, AgentThread& thread, const JSONValue& params) {
  ThreadChoices chosen = thread.choices;
  chosen.apply(params);
  if (chosen == thread.choices) return;
  store.change(thread, [&](AgentThread& newest) { newest.choices.apply(params); });
}

void addThreadEditRequests(RequestTable& table, AgentThreadStore& store, AgentClient& client) {
  table["thread/name/set"] = [&](const JSONValue& params) { return setName(store, client, params); };
  table["thread/metadata/update"] = [&](const JSONValue& params) { return updateMetadata(store, params); };
  table["thread/inject_items"] = [&](const JSONValue& params) { return injectItems(store, params); };
  table["thread/settings/update"] = [&](const JSONValue& params) {
    applyChoices(store, knownThread(store, params), params);
    return JSONValue::object();
  };
  table["thread/approveGuardianDeniedAction"] = [&](const JSONValue& params) {
    return approveDeniedAction(store, params);
  };
}

}  // namespace ormel::simulator
