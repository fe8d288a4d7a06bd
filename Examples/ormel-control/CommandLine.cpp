#include "CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <memory>
#include <utility>

#include "AccountCommands.h"
#include "AppCommands.h"
#include "CatalogueCommands.h"
#include "Completion.h"
#include "ConfigCommands.h"
#include "MachineCommands.h"
#include "ThreadCommands.h"

namespace ormel::control {

namespace {

constexpr int usageError = 2;

/// The arguments of all commands; each reads its own.
struct Arguments {
  std::string id;
  std::string name;
  std::string path;
  std::string text;
  std::string shell;
  std::string directory;
  std::optional<std::string> searchTerm;
  std::optional<std::string> json;
  std::optional<std::int64_t> timeoutSeconds;
  bool archived = false;
  bool all = false;
  bool installed = false;
  /// The words behind "--", for the command that runs them.
  std::vector<std::string> program;

  /// The one that was told, or the program's own.
  std::string workingDirectory() const {
    return std::filesystem::absolute(directory.empty() ? "." : directory).lexically_normal().string();
  }
  /// Relative paths are meant from here, wherever the server is.
  std::string wholePath() const {
    return (std::filesystem::path(workingDirectory()) / path).lexically_normal().string();
  }
  std::optional<JSONValue> value() const {
    if (!json) return std::nullopt;
    return JSONValue::decode(*json);
  }
};

/// The declaration of the command line, which fills the choice when it is parsed. The actions outlive it.
class Declaration {
 public:
  Declaration(Choice& choice, std::vector<std::string> program) : choice_(choice) {
    given_->program = std::move(program);
    root_.require_subcommand(1)->fallthrough();
    root_
        .add_option("--server,--ormel", choice.server,
                    "The server executable to use; it is trusted because you name it")
        ->type_name("PATH");
    root_.add_flag("--json", choice.json, "Print one JSON document, or for watch a line of JSON each");
    root_.add_option("--cd", given_->directory, "The directory whose configuration is meant, in place of this one")
        ->check(CLI::ExistingDirectory)
        ->type_name("DIR");
    root_.footer("The server is the one that --server names, or else the one that the library finds.");
    declareThreads();
    declareCatalogue();
    declareConfig();
    declareMachine();
    declareRest();
  }

  CLI::App& root() { return root_; }

 private:
  using Given = std::shared_ptr<Arguments>;

  /// A command that asks the server.
  CLI::App& asking(CLI::App& parent, const std::string& name, const std::string& description, Action action) {
    CLI::App& declared = *parent.add_subcommand(name, description);
    // A command of this command has been chosen before.
    declared.final_callback([this, action = std::move(action)] {
      if (!choice_.action) choice_.action = action;
    });
    return declared;
  }

  CLI::App& group(const std::string& name, const std::string& description) {
    CLI::App& declared = *root_.add_subcommand(name, description);
    declared.require_subcommand(1);
    return declared;
  }

  void declareThreads();
  void declareCatalogue();
  void declareConfig();
  void declareMachine();
  void declareRest();

  Choice& choice_;
  Given given_ = std::make_shared<Arguments>();
  CLI::App root_{"Manages what an agent server keeps and offers.", "ormel-control"};
};

std::string errorInJSON(const std::string& text) {
  try {
    JSONValue::decode(text);
    return "";
  } catch (const Error&) {
    return "This is no JSON (a text needs its quotes): " + text;
  }
}

void Declaration::declareThreads() {
  CLI::App& threads = asking(
      root_, "threads", "List the threads that the server keeps",
      [given = given_](Server server) { return listThreads(std::move(server), given->searchTerm, given->archived); });
  threads.add_option("--search", given_->searchTerm, "Only those with this text")->type_name("TEXT");
  threads.add_flag("--archived", given_->archived, "Those of the archive, and no others");

  CLI::App& thread = group("thread", "Read or change a thread");
  using OnThread = Task<Report> (*)(Server, std::string);
  const struct {
    const char* name;
    const char* description;
    OnThread makeTask;
  } commands[] = {{"read", "Show a thread and its turns", readThread},
                  {"fork", "Make a copy that goes on by itself, and print its id", forkThread},
                  {"archive", "Put a thread into the archive", archiveThread},
                  {"unarchive", "Take a thread out of the archive", unarchiveThread},
                  {"delete", "Delete a thread for good", deleteThread}};
  for (const auto& row : commands) {
    CLI::App& declared = asking(
        thread, row.name, row.description,
        [given = given_, makeTask = row.makeTask](Server server) { return makeTask(std::move(server), given->id); });
    declared.add_option("ID", given_->id, "The thread")->required();
  }
  CLI::App& rename = asking(thread, "rename", "Give a thread a name", [given = given_](Server server) {
    return renameThread(std::move(server), given->id, given->name);
  });
  rename.add_option("ID", given_->id, "The thread")->required();
  rename.add_option("NAME", given_->name, "Its name from now on")->required();
}

void Declaration::declareCatalogue() {
  CLI::App& models = asking(root_, "models", "List the models",
                            [given = given_](Server server) { return listModels(std::move(server), given->all); });
  models.add_flag("--all", given_->all, "Also those that are not offered for choice");
  asking(root_, "skills", "List the skills",
         [given = given_](Server server) { return listSkills(std::move(server), given->workingDirectory()); });
  asking(root_, "hooks", "List the hooks",
         [given = given_](Server server) { return listHooks(std::move(server), given->workingDirectory()); });
  CLI::App& apps = asking(root_, "apps", "List the apps", [given = given_](Server server) {
    return given->installed ? listInstalledApps(std::move(server)) : listApps(std::move(server));
  });
  apps.add_flag("--installed", given_->installed, "Those that are installed");
  asking(root_, "mcp", "List the MCP servers", listMcpServers);
  CLI::App& plugins = asking(root_, "plugins", "List the plugins of all marketplaces", [given = given_](Server server) {
    return given->installed ? listInstalledPlugins(std::move(server), given->workingDirectory())
                            : listPlugins(std::move(server), given->workingDirectory());
  });
  plugins.add_flag("--installed", given_->installed, "Those that are installed");
  asking(root_, "permissions", "List the permission profiles",
         [given = given_](Server server) { return listPermissions(std::move(server), given->workingDirectory()); });
  asking(root_, "features", "List the experimental features", listFeatures);
}

void Declaration::declareConfig() {
  CLI::App& config =
      asking(root_, "config", "Show the configuration, or read or change a value of it",
             [given = given_](Server server) { return listConfig(std::move(server), given->workingDirectory()); });
  config.require_subcommand(0, 1);
  CLI::App& get = asking(config, "get", "Print the value of a key", [given = given_](Server server) {
    return getConfig(std::move(server), given->workingDirectory(), given->path);
  });
  get.add_option("KEY", given_->path, "Keys with dots in between")->required();
  CLI::App& set = asking(config, "set", "Write the value of a key", [given = given_](Server server) {
    return setConfig(std::move(server), given->path, given->value().value_or(nullptr));
  });
  set.add_option("KEY", given_->path, "Keys with dots in between")->required();
  set.add_option("JSON", given_->json, "The value")->required()->check(errorInJSON);
}

void Declaration::declareMachine() {
  CLI::App& files = group("files", "Look at files on the server's machine");
  CLI::App& list = asking(files, "ls", "List a directory", [given = given_](Server server) {
    return listDirectory(std::move(server), given->wholePath());
  });
  list.add_option("PATH", given_->path, "The directory")->required();
  CLI::App& cat = asking(files, "cat", "Print a file",
                         [given = given_](Server server) { return printFile(std::move(server), given->wholePath()); });
  cat.add_option("PATH", given_->path, "The file")->required();

  CLI::App& exec = *root_.add_subcommand("exec", "Run a program on the server's machine: exec -- COMMAND...");
  exec.add_option("--timeout", given_->timeoutSeconds, "How long it may run, in seconds")
      ->type_name("SECONDS")
      ->check(CLI::Range(std::int64_t{1}, std::int64_t{1'000'000'000}));
  exec.final_callback([this] {
    if (given_->program.empty()) throw CLI::RequiredError("-- COMMAND");
    choice_.action = [given = given_](Server server) {
      return runProgram(std::move(server), given->program, given->workingDirectory(), given->timeoutSeconds);
    };
  });

  CLI::App& call =
      asking(root_, "call", "Make any call, and print its result as JSON",
             [given = given_](Server server) { return callMethod(std::move(server), given->text, given->value()); });
  call.add_option("METHOD", given_->text, "The method, such as model/list")->required();
  call.add_option("JSON", given_->json, "Its params")->check(errorInJSON);
}

void Declaration::declareRest() {
  asking(root_, "account", "Show the account and its rate limits", readAccount);
  asking(root_, "usage", "Show how much the account was used", readUsage);
  root_.add_subcommand("watch", "Print the server's notifications as they come")->final_callback([this] {
    choice_.watches = true;
  });
  CLI::App& completion =
      *root_.add_subcommand("completion", "Print the script that completes command lines in a shell");
  completion.add_option("SHELL", given_->shell, "bash, zsh or fish")
      ->required()
      ->check(CLI::IsMember(completionShells()));
  completion.final_callback([this] { choice_.text = completionScript(given_->shell, root_); });
}

/// Declares and parses. Fails with `CLI::ParseError`, after `failed` was called with what explains it.
template <typename Failed>
Choice parsed(std::vector<std::string> arguments, std::vector<std::string> program, Failed failed) {
  Choice choice;
  Declaration declaration(choice, std::move(program));
  // It takes them from the back.
  std::reverse(arguments.begin(), arguments.end());
  try {
    declaration.root().parse(std::move(arguments));
  } catch (const CLI::ParseError& error) {
    failed(declaration.root(), error);
    throw;
  }
  return choice;
}

/// Whether these arguments, those ahead of a "--", say that what follows is a program with arguments of its own.
bool runsProgram(const std::vector<std::string>& arguments) {
  return std::find(arguments.begin(), arguments.end(), "exec") != arguments.end();
}

}  // namespace

CommandLine readCommandLine(const std::vector<std::string>& arguments) {
  CommandLine result;
  std::vector<std::string> own = arguments;
  std::vector<std::string> program;
  const auto mark = std::find(arguments.begin(), arguments.end(), "--");
  if (mark != arguments.end() && runsProgram({arguments.begin(), mark})) {
    own.assign(arguments.begin(), mark);
    program.assign(mark + 1, arguments.end());
  }
  try {
    result.choice = parsed(own, program, [&](CLI::App& root, const CLI::ParseError& error) {
      const bool helped = root.exit(error) == static_cast<int>(CLI::ExitCodes::Success);
      result.exitStatus = helped ? 0 : usageError;
    });
  } catch (const CLI::ParseError&) {
    return result;
  }
  return result;
}

}  // namespace ormel::control
