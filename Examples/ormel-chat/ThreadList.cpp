#include "ThreadList.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

#include "Console.h"
#include "Failure.h"
#include "ForeignText.h"
#include "ThreadTitle.h"

namespace ormel::chat {

namespace {

/// More than anybody would look through.
constexpr std::size_t mostThreads = 1000;

double secondsSinceEpoch() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::string titleAndAge(const OrmelThreadRecord& thread) {
  const std::string age = ageOf(thread, secondsSinceEpoch());
  return titleOf(thread) + (age.empty() ? "" : " (" + age + ")");
}

}  // namespace

Task<std::vector<OrmelThreadRecord>> keptThreads(Ormel ormel) {
  std::vector<OrmelThreadRecord> threads;
  ListThreadsParams params;
  params.sortKey = ThreadSortKey::recencyAt;
  params.sortDirection = ThreadSortDirection::desc;
  do {
    ThreadListResponse page = co_await ormel.listThreads(params);
    std::move(page.data.begin(), page.data.end(), std::back_inserter(threads));
    params.cursor = std::move(page.nextCursor);
  } while (params.cursor && threads.size() < mostThreads);
  co_return threads;
}

std::string threadLine(const OrmelThreadRecord& thread) {
  return visible(thread.id) + "  " + visible(titleAndAge(thread));
}

std::shared_ptr<Question> threadQuestion(const std::vector<OrmelThreadRecord>& threads,
                                         std::function<void(const std::string& id)> chosen) {
  FormField field{"thread", "", {}};
  std::vector<std::string> ids;
  for (const OrmelThreadRecord& thread : threads) {
    field.options.push_back({thread.id, titleAndAge(thread)});
    ids.push_back(thread.id);
  }
  field.accepts = [ids = std::move(ids)](const std::string& id) {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
  };
  return std::make_shared<FormQuestion>("Which conversation? An empty line leaves it at this one.",
                                        std::vector<Quote>(), std::vector<FormField>{std::move(field)},
                                        [chosen = std::move(chosen)](const std::optional<FormAnswers>& answers) {
                                          const auto answer =
                                              answers ? answers->find("thread") : FormAnswers::const_iterator();
                                          if (answers && answer != answers->end()) chosen(answer->second);
                                        });
}

int printThreads(const Ormel& ormel, bool json) {
  Console output(STDOUT_FILENO);
  try {
    for (const OrmelThreadRecord& thread : keptThreads(ormel).get()) {
      output.line(json ? encode(thread).encode() : threadLine(thread));
    }
    output.flush();
    return 0;
  } catch (const std::exception& error) {
    output.flush();
    tellFailure(error);
    return 1;
  }
}

}  // namespace ormel::chat
