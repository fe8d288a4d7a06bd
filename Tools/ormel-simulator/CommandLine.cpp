#include "ormel-simulator/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "ormel-simulator/Agent/TurnScripts.h"

namespace ormel::simulator {

namespace {

constexpr const char* description =
    "Plays the server's side of a conversation: from a scenario file, or without one as a small agent of its own.\n"
    "Everything from \"app-server\" on is what a client starts the real server with:\n"
    "  ormel-simulator [OPTIONS] app-server --listen stdio:// [--config KEY=VALUE]...";

constexpr const char* scenarioHelp =
    R"(
A scenario reads like the conversation. One statement a line, "#" starts a comment:

  client asks initialize {"clientInfo": "$any"}
  server answers {"userAgent": "simulator"}
  client notifies initialized
  client asks thread/start
  server answers {"thread": {"id": "t1"}}
  client asks turn/start {"threadId": "t1", "input": "$array:input"}
  server answers {"turn": {"id": "u1"}}
  server asks item/commandExecution/requestApproval {"threadId": "t1", "turnId": "u1"} as approval
  client answers approval {"decision": "decline"}
  server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}

What the client does:
  client asks METHOD [[exactly] EXAMPLE | without params] [as NAME]
  client notifies METHOD [[exactly] EXAMPLE | without params]
  client answers [NAME] [with] [error] [exactly] EXAMPLE
  client sends [exactly] EXAMPLE             a whole message
  client closes input
What the server does:
  server answers [NAME] [with] [error] JSON
  server notifies METHOD [JSON]
  server asks METHOD [JSON] [with id JSON] [as NAME] [expecting [error] [exactly] EXAMPLE]
  server sends JSON                          a whole message
  server writes raw|stderr "TEXT" [N times] [then "TEXT" [N times]]...
  server floods stdout|stderr N              N bytes
  server closes stdin|stdout|stderr
  server ignores SIGNAL
  server stops reading, server resumes reading
  server exits N, server exits with signal SIGNAL
  server forks ... end                       the child shares the pipes
The rest:
  wait N ms, wait until input closes | killed | file "NAME" | signal SIGNAL
  repeat N times [as NAME] ... end
  in any order ... end, in one write ... end, in run N [or later] ... end
  always answer METHOD [EXAMPLE] with [error] JSON, always ignore METHOD [EXAMPLE]
  patience N s, time limit N s

In an EXAMPLE: "$any", "$string", "$number", "$integer", "$bool", "$object", "$array", "$null", each with
":name" behind it to capture the value; "$capture:name", "$absent", "$maybe", "$contains:text", "$matches:regex".
A captured value is "$name", or ${name} inside a text.

Exit status: 0 after the end of the scenario and of the input, 97 when the client did something else than the
scenario expects, 98 when the scenario is wrong, 99 when the simulator cannot start.
The whole language is described in docs/simulator.md.)";

std::string agentHelp() {
  return "Without a scenario, the built-in agent answers. The first of these words in the user's input tells it what "
         "to\n"
         "do; without any of them, it talks:\n" +
         turnScriptsHelp();
}

void addStateOptions(CLI::App& app, AgentSettings& agent) {
  app.add_option("--state", agent.stateFolder, "Folder in which the agent keeps its threads, instead of the user's own")
      ->envname("ORMEL_SIMULATOR_STATE")
      ->type_name("FOLDER");
  app.add_option("--files", agent.filesFolder,
                 "Folder of the files that a client may read and write, instead of one in the folder of the threads")
      ->envname("ORMEL_SIMULATOR_FILES")
      ->type_name("FOLDER");
  app.add_flag("--forget", agent.forgets, "Keep no threads when the agent ends, whatever folder is named")
      ->envname("ORMEL_SIMULATOR_FORGET");
  app.add_option("--without", agent.unknownMethods,
                 "Methods that the agent does not know, as an older server would not")
      ->envname("ORMEL_SIMULATOR_WITHOUT")
      ->delimiter(',')
      ->type_name("METHOD,...");
}

/// The values of all "--config".
std::vector<std::string> configOverrides(const std::vector<std::string>& serverArguments) {
  std::vector<std::string> overrides;
  for (std::size_t index = 1; index < serverArguments.size(); ++index) {
    if (serverArguments[index - 1] == "--config") overrides.push_back(serverArguments[index]);
  }
  return overrides;
}

const char* serverArgumentsFault(const std::vector<std::string>& arguments) {
  if (arguments.size() < 3 || arguments[1] != "--listen" || arguments[2] != "stdio://") {
    return "\"app-server\" must be followed by \"--listen stdio://\"";
  }
  for (std::size_t index = 3; index < arguments.size(); index += 2) {
    if (arguments[index] != "--config") return "after \"--listen stdio://\" only \"--config KEY=VALUE\" can follow";
    const bool hasPair = index + 1 < arguments.size() && arguments[index + 1].find('=') != std::string::npos;
    if (!hasPair) return "\"--config\" must be followed by KEY=VALUE";
  }
  return nullptr;
}

int complain(const std::string& text) {
  std::cerr << "ormel-simulator: " << text << "\n";
  return cannotStartStatus;
}

}  // namespace

CommandLine readCommandLine(const std::vector<std::string>& arguments) {
  CommandLine result;
  // The server's own arguments are the client's words, kept byte for byte: no option parser gets to see them.
  const auto server = std::find(arguments.begin(), arguments.end(), "app-server");
  result.serverArguments.assign(server, arguments.end());
  result.agent.configOverrides = configOverrides(result.serverArguments);
  std::vector<std::string> own(std::make_reverse_iterator(server), arguments.rend());

  CLI::App app(description, "ormel-simulator");
  app.footer(agentHelp() + scenarioHelp);
  app.add_option("--scenario", result.scenarioPath, "The scenario to play")
      ->envname("ORMEL_SIMULATOR_SCENARIO")
      ->type_name("FILE");
  app.add_option("--record", result.recordPath, "Append to this file what is received and done, as lines of JSON")
      ->envname("ORMEL_SIMULATOR_RECORD")
      ->type_name("FILE");
  app.add_option("--check", result.pathToCheck, "Only check that this scenario is well-formed")->type_name("FILE");
  constexpr int slowestPace = 60'000;
  int pace = static_cast<int>(result.agent.pace.count());
  app.add_option("--pace", pace, "Milliseconds between two steps of the agent")
      ->envname("ORMEL_SIMULATOR_PACE_MS")
      ->type_name("MS")
      ->capture_default_str()
      ->check(CLI::Range(0, slowestPace));
  addStateOptions(app, result.agent);
  try {
    app.parse(own);
    result.agent.pace = std::chrono::milliseconds(pace);
  } catch (const CLI::ParseError& error) {
    result.exitStatus = error.get_exit_code() == 0 ? app.exit(error) : complain(error.what());
    return result;
  }
  if (!result.pathToCheck.empty()) return result;
  if (result.serverArguments.empty()) {
    result.exitStatus = complain("nothing to do; give \"app-server --listen stdio://\", or see --help");
  } else if (const char* fault = serverArgumentsFault(result.serverArguments)) {
    result.exitStatus = complain(fault);
  }
  return result;
}

}  // namespace ormel::simulator
