#pragma once

#include <poll.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ormel-simulator/Machine/Commands/BoundedText.h"
#include "ormel-simulator/Machine/Commands/KeptProcess.h"

namespace ormel::simulator {

/// The outcome of a command.
struct CommandResult {
  /// Nothing where nobody can tell.
  std::optional<int> exitCode;
  BoundedText output;
  BoundedText error;
  /// Whether its time was over.
  bool hasTimedOut = false;
};

/// A command that runs, and what it says.
class Command {
 public:
  using Clock = std::chrono::steady_clock;
  /// Called with each piece of output that is kept: "stdout" or "stderr", the bytes, and whether no more is kept.
  using OutputHandler = std::function<void(std::string_view stream, std::string_view bytes, bool capReached)>;

  /// Runs without limit where none is given. The handler may be empty. Fails with `Refusal` if it cannot be run.
  Command(const CommandLaunch& launch, std::optional<std::chrono::milliseconds> timeLimit, OutputHandler onOutput);

  void addDescriptors(std::vector<pollfd>& descriptors) const;
  /// When something is to be done though no descriptor is ready.
  std::optional<Clock::time_point> due() const;

  /// Takes and gives what there is, without waiting.
  void serve();

  /// Once it is there, nothing of the command runs any more.
  const std::optional<CommandResult>& result() const noexcept { return result_; }

  bool acceptsInput() const noexcept { return process_.input.isOpen() && !closesInput_; }
  std::size_t unreadInput() const noexcept { return pendingInput_.size(); }
  /// Queues bytes behind those that the command has not read yet.
  void write(std::string_view bytes) { pendingInput_ += bytes; }
  /// Closes the input behind the bytes that are queued.
  void closeInput();
  /// Has no effect unless the command runs in a terminal.
  void resize(const TerminalSize& size);
  /// Asks it to end, and after a moment ends it.
  void terminate();

 private:
  void giveInput();
  void takeOutput(detail::FileDescriptor& source, BoundedText& text, std::string_view name, std::size_t pieces);
  void checkTime();

  KeptProcess process_;
  OutputHandler onOutput_;
  bool hasTerminal_;
  std::string pendingInput_;
  bool closesInput_ = false;
  std::optional<Clock::time_point> timeLimit_;
  std::optional<Clock::time_point> killTime_;
  CommandResult gathered_;
  std::optional<CommandResult> result_;
};

}  // namespace ormel::simulator
