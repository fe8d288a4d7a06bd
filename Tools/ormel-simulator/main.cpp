#include <unistd.h>

#include <csignal>
#include <iostream>

#include "ormel-simulator/Agent/Agent.h"
#include "ormel-simulator/CommandLine.h"
#include "ormel-simulator/Scenario/Player.h"
#include "ormel-simulator/Scenario/ScenarioParser.h"
#include "ormel-simulator/Scenario/Signals.h"

namespace ormel::simulator {

namespace {

void recordFailure(Recorder& recorder, const std::string& text, const FailedExpectation* failure) {
  JSONObjectBuilder members;
  members.set("text", text);
  if (failure) {
    members.set("line", failure->line).set("expected", failure->expected);
    members.set("received", failure->received).set("reason", failure->reason);
  }
  recorder.record("failure", members);
}

Exit playScenario(const Scenario& scenario, Recorder& recorder) {
  Wire wire;
  try {
    return Player(scenario, wire, recorder).play();
  } catch (const FailedExpectation& failure) {
    recordFailure(recorder, failure.description(), &failure);
    std::cerr << "ormel-simulator: " << failure.what() << "\n";
    return Exit{failedExpectationStatus};
  } catch (const ScenarioError& error) {
    recordFailure(recorder, error.description(), nullptr);
    std::cerr << "ormel-simulator: " << error.what() << "\n";
    return Exit{badScenarioStatus};
  }
}

int end(const Exit& exit, Recorder& recorder) {
  JSONObjectBuilder members;
  if (exit.signal != 0) {
    recorder.record("exit", members.set("signal", signalName(exit.signal)));
    dieBySignal(exit.signal);
  }
  recorder.record("exit", members.set("status", exit.status));
  return exit.status;
}

int check(const std::string& path) {
  loadScenario(path);
  std::cout << path << ": a scenario\n";
  return 0;
}

Exit serveAsAgent(const AgentSettings& settings, Recorder& recorder) {
  Wire wire;
  // The terminal's interrupt goes to the client too, if one started this process; it is for the client to act on.
  if (::isatty(STDIN_FILENO) == 0) ignoreAndCount(SIGINT);
  return Agent(wire, recorder, settings).run();
}

int run(const CommandLine& commandLine, const std::vector<std::string>& arguments) {
  restoreSignals();
  Recorder recorder(commandLine.recordPath);
  recorder.recordStart(arguments);
  if (commandLine.scenarioPath.empty()) return end(serveAsAgent(commandLine.agent, recorder), recorder);
  Scenario scenario;
  try {
    scenario = loadScenario(commandLine.scenarioPath);
  } catch (const ScenarioError& error) {
    recordFailure(recorder, error.description(), nullptr);
    throw;
  }
  return end(playScenario(scenario, recorder), recorder);
}

int simulate(const std::vector<std::string>& arguments) {
  const CommandLine commandLine = readCommandLine(arguments);
  if (commandLine.exitStatus) return *commandLine.exitStatus;
  try {
    return commandLine.pathToCheck.empty() ? run(commandLine, arguments) : check(commandLine.pathToCheck);
  } catch (const ScenarioError& error) {
    std::cerr << "ormel-simulator: " << error.what() << "\n";
    return badScenarioStatus;
  } catch (const Error& error) {
    std::cerr << "ormel-simulator: " << error.what() << "\n";
    return cannotStartStatus;
  }
}

}  // namespace

}  // namespace ormel::simulator

int main(int argc, char** argv) { return ormel::simulator::simulate(std::vector<std::string>(argv + 1, argv + argc)); }
