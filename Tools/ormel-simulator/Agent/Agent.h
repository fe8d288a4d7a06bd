#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "ormel-simulator/Agent/AgentSettings.h"
#include "ormel-simulator/Agent/AgentThreadStore.h"
#include "ormel-simulator/Agent/AgentTurn.h"
#include "ormel-simulator/Agent/StateFolder.h"
#include "ormel-simulator/Catalogue/Catalogue.h"
#include "ormel-simulator/Machine/Machine.h"
#include "ormel-simulator/Requests/AgentClient.h"
#include "ormel-simulator/Requests/LaterSteps.h"
#include "ormel-simulator/Requests/RequestTable.h"
#include "ormel-simulator/Scenario/Scenario.h"

namespace ormel::simulator {

/// The built-in agent: it holds a whole conversation by the words that it finds in the user's input.
class Agent {
 public:
  /// Fails with `Error` if the folder of its state cannot be used.
  Agent(Wire& wire, Recorder& recorder, const AgentSettings& settings)
      : Agent(wire, recorder, settings, openStateFolder(settings)) {}

  /// Serves the client until it closes the input, and tells how the process is to end. Single-threaded: it reads
  /// whenever no step of a turn is due.
  Exit run();

 private:
  Agent(Wire& wire, Recorder& recorder, const AgentSettings& settings, const std::filesystem::path& stateFolder);

  void addOwnRequests();
  void receiveLines();
  void receive(const Message& message);
  void answer(const Message& request);
  void advanceTurns();
  void doLaterSteps();
  void endTurn(AgentTurn& turn);
  milliseconds timeToNextStep() const;

  JSONValue initialize(const JSONValue& params);
  JSONValue compactThread(const JSONValue& params);
  JSONValue runShellCommand(const JSONValue& params);
  JSONValue startTurn(const JSONValue& params);
  JSONValue steerTurn(const JSONValue& params);
  JSONValue interruptTurn(const JSONValue& params);
  JSONValue startReview(const JSONValue& params);

  AgentThread& thread(const JSONValue& params);
  AgentTurn& beginTurn(AgentThread& thread, const JSONValue& outputSchema);
  AgentTurn* runningTurn(const AgentThread& thread);
  AgentTurn& addressedTurn(const JSONValue& params, const char* turnKey);

  Wire& wire_;
  Recorder& recorder_;
  AgentSettings settings_;
  AgentClient client_;
  AgentThreadStore threads_;
  LaterSteps later_;
  Catalogue catalogue_;
  Machine machine_;
  RequestTable requests_;
  // After the threads and the client, which they refer to.
  std::vector<std::unique_ptr<AgentTurn>> turns_;
  bool initialized_ = false;
  bool takesExperiments_ = false;
  std::optional<int> exitStatus_;
};

}  // namespace ormel::simulator
