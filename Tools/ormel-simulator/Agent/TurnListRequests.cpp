#include "ormel-simulator/Agent/TurnListRequests.h"

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "ormel-simulator/Agent/ThreadLookup.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Paging.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

ItemsView viewOf(const JSONValue& params) {
  const std::string view = textMember(params, "itemsView").value_or("full");
  if (view == "full") return ItemsView::full;
  if (view == "summary") return ItemsView::summary;
  if (view == "notLoaded") return ItemsView::notLoaded;
  throw Refusal(invalidParams, "itemsView must be notLoaded, summary or full");
}

JSONValue listTurns(AgentThreadStore& store, const JSONValue& params) {
  const AgentThread& thread = knownThread(store, params);
  const ItemsView view = viewOf(params);
  std::vector<PagedElement> elements;
  elements.reserve(thread.turns.size());
  for (const AgentTurnRecord& turn : thread.turns) {
    elements.push_back({{static_cast<double>(elements.size()), turn.id}, [&turn, view] { return turn.json(view); }});
  }
  return pageOf(std::move(elements), params, PageOrder::descending);
}

enum class ItemForm { inEnvelope, plain };

JSONValue listItems(AgentThreadStore& store, const JSONValue& params, ItemForm form) {
  const std::string turnID = requiredText(params, "turnId");
  const AgentTurnRecord* turn = knownThread(store, params).findTurn(turnID);
  if (!turn) throw Refusal(invalidRequest, "turn not found: " + turnID);
  std::vector<PagedElement> elements;
  elements.reserve(turn->items.size());
  for (const JSONValue& item : turn->items) {
    elements.push_back({{static_cast<double>(elements.size()), turnID}, [&, form] {
                          if (form == ItemForm::plain) return item;
                          return JSONValue::object({{"turnId", turnID}, {"item", item}});
                        }});
  }
  return pageOf(std::move(elements), params, PageOrder::ascending);
}

/// The id of the thread that the params name by itself, or by its file.
std::string conversationOf(const AgentThreadStore& store, const JSONValue& params) {
  if (const auto id = textMember(params, "conversationId")) return *id;
  const auto path = textMember(params, "rolloutPath");
  if (!path) throw Refusal(invalidParams, "conversationId or rolloutPath must be given");
  const std::filesystem::path file(*path);
  if (store.folder().empty() || file.parent_path() != store.folder() || file.extension() != ".json") {
    throw Refusal(invalidRequest, "no thread is kept in " + *path + "; " + store.summary());
  }
  return file.stem().string();
}

JSONValue summarize(AgentThreadStore& store, const JSONValue& params) {
  const AgentThread& thread = knownThread(store, conversationOf(store, params));
  JSONObjectBuilder summary;
  summary.set("conversationId", thread.id).set("path", textOrNull(thread.path)).set("preview", thread.preview());
  summary.set("createdAt", thread.createdAt).set("updatedAt", thread.updatedAt).set("cwd", thread.choices.cwd);
  summary.set("modelProvider", thread.choices.modelProvider).set("source", AgentThread::source);
  return JSONValue::object({{"summary", summary.set("gitInfo", thread.gitInfo).build()}});
}

}  // namespace

void addTurnListRequests(RequestTable& table, AgentThreadStore& store) {
  table["thread/turns/list"] = [&](const JSONValue& params) { return listTurns(store, params); };
  table["thread/items/list"] = [&](const JSONValue& params) { return listItems(store, params, ItemForm::inEnvelope); };
  table["thread/turns/items/list"] = [&](const JSONValue& params) { return listItems(store, params, ItemForm::plain); };
  table["getConversationSummary"] = [&](const JSONValue& params) { return summarize(store, params); };
}

}  // namespace ormel::simulator
