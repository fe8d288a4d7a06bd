#include "ormel-simulator/Agent/ThreadRequests.h"

#include <utility>

#include "ormel-simulator/Agent/ThreadEditRequests.h"
#include "ormel-simulator/Agent/ThreadLookup.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/NewID.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

JSONValue noResult() { return JSONValue::object(); }

ItemsView viewUnlessExcluded(const JSONValue& params) {
  return flagMember(params, "excludeTurns") ? ItemsView::notLoaded : ItemsView::full;
}

JSONValue startThread(AgentThreadStore& store, const JSONValue& params) {
  AgentThread thread;
  thread.id = newID();
  thread.ephemeral = flagMember(params, "ephemeral");
  thread.threadSource = textMember(params, "threadSource");
  thread.choices = ThreadChoices::ofNewThread();
  thread.choices.apply(params);
  const AgentThread& kept = store.add(std::move(thread));
  store.load(kept);
  return kept.responseJSON(ItemsView::notLoaded);
}

JSONValue resumeThread(AgentThreadStore& store, const JSONValue& params) {
  AgentThread& thread = knownThread(store, params);
  applyChoices(store, thread, params);
  store.load(thread);
  return thread.responseJSON(viewUnlessExcluded(params));
}

JSONValue readThread(AgentThreadStore& store, const JSONValue& params) {
  const ItemsView view = flagMember(params, "includeTurns") ? ItemsView::full : ItemsView::notLoaded;
  return JSONValue::object({{"thread", knownThread(store, params).json(view)}});
}

AgentThread& idleThread(AgentThreadStore& store, const JSONValue& params) {
  AgentThread& thread = knownThread(store, params);
  if (thread.isActive()) throw Refusal(invalidRequest, "a turn of the thread is running: " + thread.id);
  return thread;
}

void setArchived(AgentThreadStore& store, AgentThread& thread, bool archived) {
  store.change(thread, [&](AgentThread& newest) {
    newest.archived = archived;
    newest.updatedAt = secondsNow();
  });
}

JSONValue archiveThread(AgentThreadStore& store, AgentClient& client, const JSONValue& params) {
  AgentThread& thread = idleThread(store, params);
  setArchived(store, thread, true);
  client.notify("thread/archived", JSONValue::object({{"threadId", thread.id}}));
  return noResult();
}

JSONValue unarchiveThread(AgentThreadStore& store, AgentClient& client, const JSONValue& params) {
  AgentThread& thread = knownThread(store, params);
  setArchived(store, thread, false);
  const JSONValue answer = JSONValue::object({{"thread", thread.json(ItemsView::notLoaded)}});
  client.notify("thread/unarchived", answer);
  return answer;
}

JSONValue deleteThread(AgentThreadStore& store, AgentClient& client, const JSONValue& params) {
  const AgentThread& thread = idleThread(store, params);
  const JSONValue id = thread.id;
  store.remove(thread);
  client.notify("thread/deleted", JSONValue::object({{"threadId", id}}));
  return noResult();
}

JSONValue unsubscribeThread(AgentThreadStore& store, const JSONValue& params) {
  const bool wasLoaded = store.unload(idleThread(store, params));
  return JSONValue::object({{"status", wasLoaded ? "unsubscribed" : "notLoaded"}});
}

void cutBehindTurn(AgentThread& thread, const std::string& turnID) {
  const AgentTurnRecord* last = thread.findTurn(turnID);
  if (!last) throw Refusal(invalidRequest, "turn not found: " + turnID);
  thread.turns.erase(thread.turns.begin() + (last - thread.turns.data()) + 1, thread.turns.end());
}

}  // namespace

AgentThread& forkThread(AgentThreadStore& store, const AgentThread& parent, const JSONValue& params) {
  AgentThread fork;
  fork.id = newID();
  fork.forkedFromID = parent.id;
  fork.ephemeral = flagMember(params, "ephemeral");
  fork.threadSource = textMember(params, "threadSource");
  fork.choices = parent.choices;
  fork.choices.apply(params);
  fork.gitInfo = parent.gitInfo;
  fork.injectedItems = parent.injectedItems;
  fork.sessionApprovals = parent.sessionApprovals;
  fork.turns = parent.turns;
  // A turn that is under way is the parent's.
  std::erase_if(fork.turns, [](const AgentTurnRecord& turn) { return turn.isUnderWay(); });
  if (const auto last = textMember(params, "lastTurnId")) cutBehindTurn(fork, *last);
  AgentThread& kept = store.add(std::move(fork));
  store.load(kept);
  return kept;
}

void addThreadRequests(RequestTable& table, AgentThreadStore& store, AgentClient& client) {
  table["thread/start"] = [&](const JSONValue& params) { return startThread(store, params); };
  table["thread/resume"] = [&](const JSONValue& params) { return resumeThread(store, params); };
  table["thread/read"] = [&](const JSONValue& params) { return readThread(store, params); };
  table["thread/fork"] = [&](const JSONValue& params) {
    return forkThread(store, knownThread(store, params), params).responseJSON(viewUnlessExcluded(params));
  };
  table["thread/archive"] = [&](const JSONValue& params) { return archiveThread(store, client, params); };
  table["thread/unarchive"] = [&](const JSONValue& params) { return unarchiveThread(store, client, params); };
  table["thread/delete"] = [&](const JSONValue& params) { return deleteThread(store, client, params); };
  table["thread/unsubscribe"] = [&](const JSONValue& params) { return unsubscribeThread(store, params); };
}

}  // namespace ormel::simulator
