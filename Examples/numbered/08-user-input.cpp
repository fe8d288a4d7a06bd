// Answers questions that the agent asks the user during a turn: always with the first choice.
// Usage: 08-user-input [SERVER]

#include <OrmelSDK/Ormel.h>

#include <iostream>

namespace {

using Answers = std::map<std::string, std::vector<std::string>>;

std::string textOf(const ormel::JSONValue& object, std::string_view key) {
  const ormel::JSONValue* text = object.find(key);
  return std::string(text ? text->stringValue().value_or("") : "");
}

Answers firstChoices(const ormel::JSONValue& arguments) {
  Answers answers;
  const ormel::JSONValue* questions = arguments.find("questions");
  if (!questions || !questions->arrayValue()) return answers;
  for (const ormel::JSONValue& question : *questions->arrayValue()) {
    std::cout << textOf(question, "question") << '\n';
    const ormel::JSONValue* options = question.find("options");
    if (!options || !options->arrayValue() || options->arrayValue()->empty()) continue;
    answers[textOf(question, "id")] = {textOf(options->arrayValue()->front(), "label")};
  }
  return answers;
}

ormel::Task<void> converse(ormel::Thread thread) {
  ormel::StreamedTurn turn = co_await thread.runStreamed("ask me something");
  while (auto event = co_await turn.events.next()) {
    if (const auto* completed = std::get_if<ormel::ItemCompletedEvent>(&event->value)) {
      if (const auto text = completed->item.agentMessageText()) std::cout << *text << '\n';
    }
    const auto* started = std::get_if<ormel::ItemStartedEvent>(&event->value);
    const auto* call = started ? std::get_if<ormel::McpToolCallItem>(&started->item.value) : nullptr;
    if (!call || call->tool != "request_user_input") continue;
    Answers answers = firstChoices(call->arguments);
    co_await thread.submitRequestUserInput(call->id, std::move(answers));
  }
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];
  converse(ormel::Ormel(options).startThread()).get();
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n' << error.advice() << '\n';
  return 1;
}
