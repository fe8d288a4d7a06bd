// Gives a conversation a goal, forks it, and reads the turns that the fork has taken over.
// Usage: 11-threads [SERVER]

#include <OrmelSDK/Ormel.h>
#include <OrmelSDK/Records/ThreadRecords.h>
#include <OrmelSDK/Records/ThreadTurnRecords.h>

#include <iostream>

namespace {

void printGoal(const ormel::ThreadGoal& goal) {
  std::cout << goal.objective << ": ";
  if (goal.tokenBudget) std::cout << *goal.tokenBudget << " tokens\n";
  if (!goal.tokenBudget) std::cout << "any number of tokens\n";
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];

  const ormel::Ormel ormel(options);
  const ormel::Thread thread = ormel.startThread();
  thread.run("Which birds sing at night?").get();
  const std::string id = thread.id().value();

  ormel::SetThreadGoalParams goal;
  goal.objective = "Know the birds";
  goal.tokenBudget = 50'000;
  printGoal(ormel.setThreadGoal(id, goal).get().goal);

  // The objective is left as it is, and so would the budget be if it were not cleared.
  ormel::SetThreadGoalParams change;
  change.tokenBudget = ormel::ThreadGoalTokenBudgetUpdate::clear();
  printGoal(ormel.setThreadGoal(id, change).get().goal);

  ormel::ForkThreadParams choices;
  choices.sandboxMode = ormel::SandboxMode::readOnly;
  const ormel::ThreadForkResponse fork = ormel.forkThread(id, choices).get();

  ormel::ListThreadTurnsParams page;
  page.limit = 10;
  for (const ormel::ThreadTurn& turn : ormel.listThreadTurns(fork.thread.id, page).get().data) {
    const bool isCompleted = turn.status == ormel::ThreadTurnStatus::completed;
    std::cout << "A turn of the fork: " << turn.items.size() << " items" << (isCompleted ? ", completed\n" : "\n");
  }
  ormel.deleteThread(fork.thread.id).get();
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
