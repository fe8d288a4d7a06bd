// Manages what a server keeps and offers: an example of a program over the management calls.

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <iostream>
#include <typeinfo>

#include "CommandLine.h"
#include "Run.h"
#include "TerminalText.h"
#include "Watch.h"
#include "ormel-chat/ServerChoice.h"

namespace ormel::control {

namespace {

/// Whether there is a standard output. Those of the streams that are closed are opened on nothing, lest a pipe to the
/// server gets the number of one.
bool prepareStreams() {
  const bool hasOutput = ::fcntl(STDOUT_FILENO, F_GETFD) >= 0;
  int opened = 0;
  while (opened >= 0 && opened <= STDERR_FILENO) opened = ::open("/dev/null", O_RDWR);
  if (opened > STDERR_FILENO) ::close(opened);
  // A reader that has gone is an error of the write, so that the server can be ended before the program.
  std::signal(SIGPIPE, SIG_IGN);
  return hasOutput;
}

int run(const Choice& choice, const std::string& ownName) {
  if (choice.text) {
    Output(STDOUT_FILENO).write(*choice.text);
    return 0;
  }
  const auto chosen = chat::chooseServer(choice.server, ownName);
  if (chosen.isSimulator) {
    std::cerr << "No ormel server was found: this is ormel-simulator, which only plays one.\n";
  }
  const Server server(chosen.ormel);
  return choice.watches ? watchNotifications(server, choice.json) : runAction(choice.action, server, choice.json);
}

int failed(const std::string& sentence) {
  std::cerr << "ormel-control: " << onOneLine(sentence) << '\n';
  return 1;
}

}  // namespace

}  // namespace ormel::control

int main(int argumentCount, char** arguments) {
  using namespace ormel::control;
  if (!prepareStreams()) return failed("There is no standard output to write to.");
  try {
    const CommandLine commandLine = readCommandLine({arguments + 1, arguments + argumentCount});
    if (commandLine.exitStatus) return *commandLine.exitStatus;
    return run(commandLine.choice, arguments[0]);
  } catch (const OutputClosed&) {
    return 0;
  } catch (const ormel::Error& error) {
    const int status = failed(error.what());
    // The program's own refusals, which are of the general type, say all there is to say.
    const bool isOwn = typeid(error) == typeid(ormel::Error) && !error.cause();
    if (!isOwn) std::cerr << onManyLines(error.advice()) << '\n';
    return status;
  } catch (const std::exception& error) {
    return failed(error.what());
  }
}
