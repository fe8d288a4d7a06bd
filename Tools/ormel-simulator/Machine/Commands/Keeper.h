#pragma once

#include "ormel-simulator/Machine/Commands/CommandLaunch.h"

namespace ormel::simulator {

/// The descriptors that the keeper of a command is given. None of them is 0, 1 or 2.
struct KeeperDescriptors {
  /// A socket to the simulator. Each byte that comes is a signal for the command; each report goes out as a whole. Its
  /// end is that of the simulator.
  int control = -1;
  /// The standard streams of the command.
  int input = -1;
  int output = -1;
  int error = -1;
};

/// The keeper's message to the simulator.
struct KeeperReport {
  enum class Event : int {
    /// The first report: the command runs.
    started,
    /// The first and last report: `detail` is the system's error number.
    noFolder,
    noProgram,
    /// The last report: `detail` is the wait status. Nothing that the command started runs any more.
    ended,
  };

  Event event = Event::started;
  int detail = 0;
};

/// Runs the command and ends with it, in a process that was forked for it: the keeper.
///
/// A process of its own can do what the simulator cannot once it has been killed: it ends the command, and all that the
/// command has started, when the simulator is gone for whatever reason. It also takes over the processes that the
/// command leaves behind, and ends them.
[[noreturn]] void keepCommand(const CommandLaunch& launch, const KeeperDescriptors& descriptors) noexcept;

}  // namespace ormel::simulator
