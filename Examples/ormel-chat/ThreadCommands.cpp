#include "ThreadCommands.h"

#include <utility>
#include <vector>

#include "ForeignText.h"
#include "OrmelSDK/Records/ThreadRecords.h"
#include "ThreadList.h"
#include "ThreadTitle.h"

namespace ormel::chat {

namespace {

constexpr const char* noThreads = "The server keeps no conversations.";

}  // namespace

Task<void> showThreads(Ormel ormel, std::shared_ptr<Inbox> inbox) {
  const std::vector<OrmelThreadRecord> threads = co_await keptThreads(ormel);
  if (threads.empty()) inbox->post(Notice{noThreads});
  for (const OrmelThreadRecord& thread : threads) inbox->post(Notice{threadLine(thread), Style::plain});
}

Task<void> offerThreads(Ormel ormel, std::shared_ptr<Inbox> inbox) {
  const std::vector<OrmelThreadRecord> threads = co_await keptThreads(ormel);
  if (threads.empty()) {
    inbox->post(Notice{noThreads});
    co_return;
  }
  auto choose = [inbox](const std::string& id) { inbox->post(ThreadChosen{id, "Going on with " + visible(id) + "."}); };
  inbox->post(QuestionAsked{threadQuestion(threads, std::move(choose))});
}

Task<void> chooseThread(Ormel ormel, std::string id, std::shared_ptr<Inbox> inbox) {
  const ThreadReadResponse response = co_await ormel.readThread(id);
  inbox->post(ThreadChosen{response.thread.id, "Going on with: " + visible(titleOf(response.thread))});
}

Task<void> nameThread(Ormel ormel, std::string id, std::string name, std::shared_ptr<Inbox> inbox) {
  co_await ormel.setThreadName(id, name);
  inbox->post(Notice{"This conversation is called: " + name});
}

Task<void> forkThread(Ormel ormel, std::string id, std::shared_ptr<Inbox> inbox) {
  const ThreadForkResponse response = co_await ormel.forkThread(id);
  const std::string& copy = response.thread.id;
  inbox->post(ThreadChosen{
      copy, "Going on in the copy " + visible(copy) + "; the conversation up to here stays as " + visible(id) + "."});
}

Task<void> archiveThread(Ormel ormel, std::string id, std::shared_ptr<Inbox> inbox) {
  co_await ormel.archiveThread(id);
  inbox->post(ThreadChosen{std::nullopt, "The conversation was put away; the next line begins a new one."});
}

}  // namespace ormel::chat
