#pragma once

#include <poll.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <vector>

#include "ormel-simulator/Machine/Commands/CommandRequests.h"
#include "ormel-simulator/Machine/Commands/RunningCommands.h"
#include "ormel-simulator/Machine/Files/FileRoot.h"
#include "ormel-simulator/Machine/Files/FileWatches.h"
#include "ormel-simulator/Requests/AgentClient.h"
#include "ormel-simulator/Requests/RequestTable.h"

namespace ormel::simulator {

/// The requests that have an effect on this computer: files, commands, searches and repositories. Single-threaded; what
/// takes long goes on whenever it is served. Destroying it ends all commands.
class Machine {
 public:
  using Clock = std::chrono::steady_clock;

  /// Files are those in the folder, which is made when it is first needed; with an empty one, requests for files are
  /// refused.
  Machine(AgentClient& client, const std::filesystem::path& files);

  void addRequests(RequestTable& table);

  /// The descriptors to wait for, besides the client's.
  std::vector<pollfd> descriptors() const;
  /// When something is to be done though nothing has come.
  std::optional<Clock::time_point> due() const { return commands_.due(); }

  /// Does what there is to do, without waiting.
  void serve();

 private:
  FileRoot files_;
  FileWatches watches_;
  CommandRequests commandRequests_;
  // After what the ends of commands are handled by.
  RunningCommands commands_;
};

}  // namespace ormel::simulator
