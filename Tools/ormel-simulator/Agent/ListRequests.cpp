#include "ormel-simulator/Agent/ListRequests.h"

#include <string>
#include <utility>
#include <vector>

#include "ormel-simulator/Agent/ThreadFilter.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Paging.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

using SortValue = double (*)(const AgentThread&);

SortValue sortValueOf(const JSONValue& params) {
  const std::string key = textMember(params, "sortKey").value_or("created_at");
  if (key == "created_at") return [](const AgentThread& thread) { return thread.createdAt; };
  if (key == "updated_at") return [](const AgentThread& thread) { return thread.updatedAt; };
  if (key == "recency_at") return [](const AgentThread& thread) { return thread.recencyAt(); };
  throw Refusal(invalidParams, "sortKey must be created_at, updated_at or recency_at");
}

JSONValue pageOfThreads(const std::vector<const AgentThread*>& threads, SortValue value, const JSONValue& params) {
  std::vector<PagedElement> elements;
  elements.reserve(threads.size());
  for (const AgentThread* thread : threads) {
    elements.push_back({{value(*thread), thread->id}, [thread] { return thread->json(ItemsView::notLoaded); }});
  }
  return pageOf(std::move(elements), params, PageOrder::descending);
}

JSONValue listThreads(AgentThreadStore& store, AgentClient& client, const JSONValue& params) {
  const ThreadFilter filter(params);
  const SortValue value = sortValueOf(params);
  const auto complain = [&client](const std::string& text) { client.complain(text); };
  std::vector<const AgentThread*> threads = store.lasting(complain);
  std::erase_if(threads, [&](const AgentThread* thread) { return !filter.lets(*thread); });
  return pageOfThreads(threads, value, params);
}

}  // namespace

void addListRequests(RequestTable& table, AgentThreadStore& store, AgentClient& client) {
  table["thread/list"] = [&](const JSONValue& params) { return listThreads(store, client, params); };
  table["thread/loaded/list"] = [&](const JSONValue& params) {
    return pageOfThreads(store.loaded(), [](const AgentThread& thread) { return thread.createdAt; }, params);
  };
}

}  // namespace ormel::simulator
