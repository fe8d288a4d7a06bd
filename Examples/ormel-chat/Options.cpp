#include "Options.h"

#include <CLI/CLI.hpp>
#include <string>

namespace ormel::chat {

namespace {

void declare(CLI::App& program, Options& options) {
  auto* prompt = program.add_option("prompt", options.prompt, "What to ask; without it, a conversation begins");
  program.add_option("--server", options.server, "The server executable to use; it is trusted because you name it");
  auto* resume = program.add_option("--resume", options.resumedThread, "Go on with the conversation of this id");
  program.add_option("--cd", options.directory, "The directory in which the agent works")
      ->check(CLI::ExistingDirectory);
  program.add_option("--model", options.model, "The model to use");
  auto* json = program.add_flag("--json", options.json, "Print each event, or each conversation, as one line of JSON");
  const auto setUpdates = [&options](const std::string& word) {
    options.jsonUpdates = word == "full" ? JSONUpdates::full : JSONUpdates::deltas;
  };
  program
      .add_option_function<std::string>(
          "--json-updates", setUpdates,
          "How a growing item is printed: \"deltas\", what is new of it; \"full\", all of it each time")
      ->check(CLI::IsMember({"deltas", "full"}))
      ->needs(json);
  auto* list = program.add_flag("--list", options.listsThreads, "Print the conversations that the server keeps");
  program.add_flag("--yes", options.approvesEverything, "Approve whatever is asked for; for scripts");
  list->excludes(prompt)->excludes(resume);
  program.footer("In a conversation, /help tells the commands. Ctrl-C ends the turn, and again the program.");
}

}  // namespace

CommandLine readCommandLine(int argumentCount, char** arguments) {
  CommandLine result;
  CLI::App program("Talks with an agent in the terminal.", "ormel-chat");
  declare(program, result.options);
  try {
    program.parse(argumentCount, arguments);
  } catch (const CLI::ParseError& error) {
    const bool helped = program.exit(error) == static_cast<int>(CLI::ExitCodes::Success);
    result.exitStatus = helped ? 0 : 1;
  }
  return result;
}

}  // namespace ormel::chat
