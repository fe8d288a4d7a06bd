#pragma once

#include <map>
#include <string>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-simulator/Machine/Commands/RunningCommands.h"
#include "ormel-simulator/Requests/AgentClient.h"
#include "ormel-simulator/Requests/RequestParams.h"
#include "ormel-simulator/Requests/RequestTable.h"

namespace ormel::simulator {

/// The requests that run a command, and those about one that runs.
class CommandRequests {
 public:
  CommandRequests(RunningCommands& running, AgentClient& client) : running_(running), client_(client) {}

  void add(RequestTable& table);

 private:
  void execute(const JSONValue& params, const LaterAnswer& answer);
  JSONValue write(const RequestParams& params);
  JSONValue resize(const RequestParams& params);
  JSONValue terminate(const RequestParams& params);

  Command& addressed(const RequestParams& params);
  Command::OutputHandler reporterOf(const std::string& id);

  RunningCommands& running_;
  AgentClient& client_;
  /// By the id that the client has given, or else one of ours.
  std::map<std::string, Command*> commands_;
};

}  // namespace ormel::simulator
