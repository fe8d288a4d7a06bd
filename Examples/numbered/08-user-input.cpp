// Answers questions that the agent asks the user during a turn: always with the first choice.
// Usage: 08-user-input [SERVER]

#include <OrmelSDK/Events/UserQuestions.h>
#include <OrmelSDK/Ormel.h>

#include <iostream>

namespace {

ormel::UserAnswers firstChoices(const std::vector<ormel::UserQuestion>& questions) {
  ormel::UserAnswers answers;
  for (const ormel::UserQuestion& question : questions) {
    std::cout << question.question << '\n';
    if (!question.options.empty()) answers[question.id] = {question.options.front().label};
  }
  return answers;
}

ormel::Task<void> converse(ormel::Thread thread) {
  ormel::StreamedTurn turn = co_await thread.runStreamed("ask me something");
  while (auto event = co_await turn.events.next()) {
    if (const auto* completed = std::get_if<ormel::ItemCompletedEvent>(&event->value)) {
      if (const auto text = completed->item.agentMessageText()) std::cout << *text << '\n';
    }
    const auto asked = ormel::UserQuestions::askedBy(*event);
    if (!asked) continue;
    ormel::UserAnswers answers = firstChoices(asked->questions);
    co_await thread.submitRequestUserInput(asked->itemID, std::move(answers));
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
