// Lists the conversations that the server keeps, page by page. Each call is a short-lived server process of its own.
// Usage: 09-list-threads [SERVER]

#include <OrmelSDK/Ormel.h>
#include <OrmelSDK/Records/ThreadRecords.h>

#include <iostream>

namespace {

/// So that there is something to list.
void haveConversation(const ormel::Ormel& ormel, const std::string& prompt, const std::string& name) {
  const ormel::Thread thread = ormel.startThread();
  thread.run(prompt).get();
  if (!name.empty()) ormel.setThreadName(thread.id().value(), name).get();
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];

  const ormel::Ormel ormel(options);
  haveConversation(ormel, "Which birds sing at night?", "Birds");
  haveConversation(ormel, "And which fish?", "");

  ormel::ListThreadsParams params;
  params.sortKey = ormel::ThreadSortKey::createdAt;
  params.sortDirection = ormel::ThreadSortDirection::desc;
  params.limit = 1;
  do {
    const ormel::ThreadListResponse page = ormel.listThreads(params).get();
    for (const ormel::OrmelThreadRecord& thread : page.data) {
      std::cout << thread.id << "  " << thread.name.value_or(thread.preview) << '\n';
    }
    params.cursor = page.nextCursor;
  } while (params.cursor);
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n' << error.advice() << '\n';
  return 1;
}
