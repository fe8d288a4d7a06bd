#include "ThreadCommands.h"

#include <chrono>
#include <iterator>
#include <utility>

#include "OrmelSDK/Records/ThreadRecords.h"
#include "Values.h"
#include "ormel-chat/ThreadTitle.h"

namespace ormel::control {

namespace {

std::string ageNow(const OrmelThreadRecord& thread) {
  const std::chrono::duration<double> now = std::chrono::system_clock::now().time_since_epoch();
  return chat::ageOf(thread, now.count());
}

std::string nameOrBeginning(const OrmelThreadRecord& thread) {
  const std::string name = thread.name.value_or("");
  return name.empty() ? thread.preview : name;
}

Table factsAbout(const OrmelThreadRecord& thread) {
  Table table{{{"FIELD", true}, "VALUE"}, {}, ""};
  const auto add = [&](const char* field, const std::string& value) {
    if (!value.empty()) table.rows.push_back({field, value});
  };
  add("id", thread.id);
  add("name", thread.name.value_or(""));
  add("begins", thread.preview);
  add("status", thread.status.type);
  add("created", timeText(thread.createdAt));
  add("updated", timeText(thread.updatedAt));
  add("directory", thread.cwd);
  add("file", thread.path.value_or(""));
  add("provider", thread.modelProvider);
  add("fork of", thread.forkedFromID.value_or(""));
  add("branch", thread.gitInfo ? thread.gitInfo->branch.value_or("") : "");
  return table;
}

/// The user's messages in the turn.
std::string saidIn(const ThreadTurn& turn) {
  std::vector<std::string> texts;
  for (const ThreadItem& item : turn.items) {
    const auto* message = std::get_if<UserMessageItem>(&item.value);
    if (!message) continue;
    for (const UserInput& part : message->content) {
      if (const auto* text = std::get_if<UserInputText>(&part.value)) texts.push_back(text->text);
      if (const auto* text = std::get_if<UserInputTextElements>(&part.value)) texts.push_back(text->text);
    }
  }
  return joined(texts);
}

Table turnsOf(const OrmelThreadRecord& thread) {
  Table table{{"TURN", "STATUS", "BEGAN", "ITEMS", "USER"}, {}, "The thread has no turns."};
  for (const ThreadTurn& turn : thread.turns) {
    table.rows.push_back({turn.id, std::string(rawValue(turn.status)), turn.startedAt ? timeText(*turn.startedAt) : "",
                          std::to_string(turn.items.size()), saidIn(turn)});
  }
  return table;
}

}  // namespace

Task<Report> listThreads(Server server, std::optional<std::string> searchTerm, bool archived) {
  std::vector<OrmelThreadRecord> threads;
  ListThreadsParams params;
  params.sortKey = ThreadSortKey::recencyAt;
  params.sortDirection = ThreadSortDirection::desc;
  params.searchTerm = std::move(searchTerm);
  if (archived) params.archived = true;
  do {
    ThreadListResponse page = co_await server.ormel.listThreads(params);
    std::move(page.data.begin(), page.data.end(), std::back_inserter(threads));
    params.cursor = std::move(page.nextCursor);
  } while (params.cursor);
  Report report;
  report.document = documentOf(threads);
  Table table{{{"THREAD", true}, "UPDATED", "TITLE", "DIRECTORY"}, {}, "There are no such threads."};
  for (const OrmelThreadRecord& thread : threads) {
    table.rows.push_back({thread.id, ageNow(thread), nameOrBeginning(thread), thread.cwd});
  }
  report.tables.push_back(std::move(table));
  co_return report;
}

Task<Report> readThread(Server server, std::string id) {
  ReadThreadParams params;
  params.includeTurns = true;
  const ThreadReadResponse response = co_await server.ormel.readThread(id, params);
  Report report;
  report.document = encode(response);
  report.tables.push_back(factsAbout(response.thread));
  report.tables.push_back(turnsOf(response.thread));
  co_return report;
}

Task<Report> forkThread(Server server, std::string id) {
  const ThreadForkResponse response = co_await server.session.forkThread(id);
  Report report = told(response.thread.id);
  report.document = encode(response);
  co_return report;
}

Task<Report> archiveThread(Server server, std::string id) {
  co_await server.session.archiveThread(id);
  co_return told(id + " is archived.");
}

Task<Report> unarchiveThread(Server server, std::string id) {
  const ThreadReadResponse response = co_await server.session.unarchiveThread(id);
  Report report = told(response.thread.id + " is out of the archive.");
  report.document = encode(response);
  co_return report;
}

Task<Report> renameThread(Server server, std::string id, std::string name) {
  co_await server.session.setThreadName(id, name);
  co_return told(id + " is called " + name + ".");
}

Task<Report> deleteThread(Server server, std::string id) {
  co_await server.session.deleteThread(id);
  co_return told(id + " is deleted.");
}

}  // namespace ormel::control
