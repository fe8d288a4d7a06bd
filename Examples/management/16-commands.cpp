// Runs commands on the server's machine: one that succeeds, one that fails, and one that takes too long.
// Usage: 16-commands [SERVER]

#include <OrmelSDK/Ormel.h>
#include <OrmelSDK/Records/CommandRecords.h>

#include <iostream>

namespace {

void print(const ormel::CommandExecResponse& end) {
  std::cout << "exit code " << end.exitCode << ", output \"" << end.stdout << "\"\n";
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];

  const ormel::Ormel ormel(options);
  ormel::ExecuteCommandParams params;
  params.workingDirectory = "/";
  // The program and its arguments, with no shell in between: nothing has to be quoted.
  print(ormel.executeCommand({"printf", "%s", "$HOME & more"}, params).get());
  print(ormel.executeCommand({"sh", "-c", "pwd | tr -d '\\n'; exit 3"}, params).get());

  params.timeoutMilliseconds = 100;
  const ormel::CommandExecResponse stopped = ormel.executeCommand({"sleep", "60"}, params).get();
  std::cout << (stopped.exitCode == 0 ? "slept well\n" : "woken up\n");
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
