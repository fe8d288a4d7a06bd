// Talks with an agent in the terminal: an example of an application of the library.

#include <exception>

#include "Failure.h"
#include "Options.h"
#include "ServerChoice.h"
#include "Session.h"
#include "ThreadList.h"

int main(int argumentCount, char** arguments) {
  const auto commandLine = ormel::chat::readCommandLine(argumentCount, arguments);
  if (commandLine.exitStatus) return *commandLine.exitStatus;
  try {
    const auto server = ormel::chat::chooseServer(commandLine.options.server, arguments[0]);
    if (commandLine.options.listsThreads) {
      return ormel::chat::printThreads(server.ormel, commandLine.options.json);
    }
    return ormel::chat::Session(commandLine.options, server).run();
  } catch (const std::exception& error) {
    ormel::chat::tellFailure(error);
    return 1;
  }
}
