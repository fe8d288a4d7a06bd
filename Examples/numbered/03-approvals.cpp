// Decides about what the agent wants to do: harmless commands may run, files stay as they are.
// Usage: 03-approvals [SERVER]

#include <OrmelSDK/Ormel.h>

#include <iostream>

namespace {

using ormel::OrmelApprovalDecision;

// A handler may answer at once ...
OrmelApprovalDecision decideCommand(const ormel::CommandApprovalRequest& request) {
  std::cout << "asked for: " << request.command.value_or("?") << '\n';
  return request.command == "ls" ? OrmelApprovalDecision::accept : OrmelApprovalDecision::decline;
}

// ... or give a task, which waits for a person or a service without holding up a thread.
ormel::Task<OrmelApprovalDecision> decideFileChange(ormel::FileChangeApprovalRequest request) {
  for (const auto& change : request.changes) std::cout << "would change: " << change.path << '\n';
  co_return OrmelApprovalDecision::decline;
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];

  ormel::ThreadOptions threadOptions;
  threadOptions.commandApprovalHandler = decideCommand;
  threadOptions.fileChangeApprovalHandler = decideFileChange;

  const ormel::Thread thread = ormel::Ormel(options).startThread(threadOptions);
  for (const char* prompt : {"run ls", "run rm -rf everything", "edit notes.txt"}) {
    const ormel::Turn turn = thread.run(prompt).get();
    std::cout << turn.finalResponse << '\n';
  }
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n' << error.advice() << '\n';
  return 1;
}
