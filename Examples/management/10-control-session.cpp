// Manages a conversation over one server process that stays, and watches what the server tells about it.
// Usage: 10-control-session [SERVER]

#include <OrmelSDK/Ormel.h>
#include <OrmelSDK/Records/ThreadRecords.h>

#include <iostream>

namespace {

class Printer {
 public:
  void operator()(const ormel::ThreadNameUpdatedNotification& news) const {
    std::cout << "named " << news.name << '\n';
  }
  void operator()(const ormel::ThreadArchivedNotification&) const { std::cout << "archived\n"; }
  void operator()(const ormel::ThreadUnarchivedNotification&) const { std::cout << "taken out of the archive\n"; }
  void operator()(const ormel::ThreadDeletedNotification&) const { std::cout << "deleted\n"; }
  void operator()(const ormel::ThreadCompactedNotification&) const { std::cout << "shortened\n"; }
};

/// Prints what is told of the threads until one is deleted.
ormel::Task<void> watch(ormel::EventChannel<ormel::OrmelControlNotification> notifications) {
  const Printer printer;
  while (auto notification = co_await notifications.next()) {
    // Servers tell about more than threads.
    const auto news = notification->threadLifecycleNotification();
    if (!news) continue;
    std::visit(printer, news->value);
    if (std::holds_alternative<ormel::ThreadDeletedNotification>(news->value)) co_return;
  }
}

ormel::Task<void> manage(ormel::OrmelControlSession session, std::string thread) {
  // Subscribed before the first call, so that nothing is missed.
  auto notifications = co_await session.notifications();

  co_await session.setThreadName(thread, "Birds");
  co_await session.archiveThread(thread);
  const ormel::ThreadReadResponse restored = co_await session.unarchiveThread(thread);
  std::cout << "The server calls it " << restored.thread.name.value_or("nothing") << '\n';
  co_await session.deleteThread(thread);

  co_await watch(std::move(notifications));
  co_await session.close();
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];

  const ormel::Ormel ormel(options);
  const ormel::Thread thread = ormel.startThread();
  thread.run("Which birds sing at night?").get();

  // Blocking, up to here and from here on; inside, everything is awaited.
  manage(ormel.makeControlSession(), thread.id().value()).get();
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n' << error.advice() << '\n';
  return 1;
}
