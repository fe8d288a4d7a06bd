// Shows a turn as it streams. An item that grows comes whole each time; only what is new is printed.
// Usage: 02-streaming [SERVER]

#include <OrmelSDK/Ormel.h>

#include <iostream>
#include <map>
#include <string_view>

namespace {

class Printer {
 public:
  void operator()(const ormel::ItemUpdatedEvent& event) { printNews(event.item); }

  void operator()(const ormel::ItemCompletedEvent& event) {
    printNews(event.item);
    if (event.item.agentMessageText()) std::cout << '\n';
  }

  void operator()(const ormel::TurnFailedEvent& event) { std::cout << "failed: " << event.error.message << '\n'; }

  template <typename Event>
  void operator()(const Event&) {}

 private:
  void printNews(const ormel::ThreadItem& item) {
    const auto text = item.agentMessageText();
    if (!text) return;
    std::cout << text->view().substr(printed_[item.id()]) << std::flush;
    printed_[item.id()] = text->size();
  }

  std::map<std::string, std::size_t> printed_;
};

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];

  const ormel::Thread thread = ormel::Ormel(options).startThread();
  ormel::StreamedTurn turn = thread.runStreamed("Tell me something").get();
  Printer printer;
  for (const ormel::ThreadEvent& event : turn.events) std::visit(printer, event.value);
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n' << error.advice() << '\n';
  return 1;
}
