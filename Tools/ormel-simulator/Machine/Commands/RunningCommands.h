#pragma once

#include <poll.h>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "ormel-simulator/Machine/Commands/Command.h"

namespace ormel::simulator {

/// The commands that run. Destroying it ends them all.
class RunningCommands {
 public:
  /// Called once, when nothing of the command runs any more. It may start another one.
  using EndHandler = std::function<void(const CommandResult& result)>;

  /// The command stays until its end has been handled. Fails with `Refusal` if it cannot be run.
  Command& start(const CommandLaunch& launch, std::optional<std::chrono::milliseconds> timeLimit,
                 Command::OutputHandler onOutput, EndHandler onEnd);

  void addDescriptors(std::vector<pollfd>& descriptors) const;
  std::optional<Command::Clock::time_point> due() const;

  /// Does what there is to do, without waiting.
  void serve();

 private:
  struct Running {
    std::unique_ptr<Command> command;
    EndHandler onEnd;
  };

  std::vector<Running> running_;
};

}  // namespace ormel::simulator
