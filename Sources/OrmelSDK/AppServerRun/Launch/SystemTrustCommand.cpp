#include "OrmelSDK/AppServerRun/Launch/SystemTrustCommand.h"

#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "OrmelSDK/AppServerRun/Launch/OrmelExecutableTrustPolicy.h"
#include "OrmelSDK/Base/ByteBuffer.h"
#include "OrmelSDK/Platform/FileDescriptor.h"
#include "OrmelSDK/Platform/ProcessHandle.h"
#include "OrmelSDK/Platform/Spawn.h"
#include "OrmelSDK/Text/UTF8.h"

namespace ormel::detail {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// Collects one output stream of a command.
class OrmelExecutableTrustOutput {
 public:
  explicit OrmelExecutableTrustOutput(FileDescriptor readEnd) : readEnd_(std::move(readEnd)) {}

  bool hasEnded() const noexcept { return !readEnd_.isOpen(); }
  int descriptor() const noexcept { return readEnd_.number(); }
  std::string_view bytes() const noexcept { return data_.view(); }

  /// Takes what is there after the descriptor was seen to be readable.
  void read() {
    constexpr std::size_t largestRead = std::size_t{64} * 1024;
    const auto count = ::read(readEnd_.number(), data_.room(largestRead), largestRead);
    if (count > 0) {
      data_.commit(static_cast<std::size_t>(count));
    } else if (count == 0 || errno != EINTR) {
      readEnd_.close();
    }
  }

 private:
  FileDescriptor readEnd_;
  ByteBuffer data_;
};

/// One run of a command. The calling thread itself reads both streams and watches for the end, so a command can
/// never be held up by a full pipe, and the readers end with the object.
class TrustCommandRun {
 public:
  TrustCommandRun(const std::string& command, const std::vector<std::string>& arguments, EndNotice notice)
      : TrustCommandRun(command, arguments, notice, makePipe(), makePipe()) {}

  TrustCommandRun(const TrustCommandRun&) = delete;
  TrustCommandRun& operator=(const TrustCommandRun&) = delete;

  ~TrustCommandRun() {
    if (!process_.termination()) process_.reapInBackground();
  }

  bool waitForEnd(milliseconds time) {
    return wait(time, [this] { return process_.termination().has_value(); });
  }

  bool waitForEndOfOutput(milliseconds time) {
    return wait(time, [this] { return output_.hasEnded() && error_.hasEnded(); });
  }

  void end(const TrustCommandWaits& waits) {
    process_.signal(SIGTERM);
    if (waitForEnd(waits.termination)) return;
    process_.signal(SIGKILL);
    waitForEnd(waits.kill);
  }

  TrustCommandOutcome outcome() const {
    TrustCommandOutcome outcome;
    const auto termination = process_.termination().value_or(Termination());
    if (termination.reason != TerminationReason::unknown) outcome.status = termination.status;
    outcome.output = repairedUTF8(std::string(output_.bytes()).append(error_.bytes()));
    return outcome;
  }

 private:
  TrustCommandRun(const std::string& command, const std::vector<std::string>& arguments, EndNotice notice, Pipe output,
                  Pipe error)
      : process_(start(command, arguments, notice, output, error)),
        output_(std::move(output.readEnd)),
        error_(std::move(error.readEnd)) {}

  static SpawnedChild start(const std::string& command, const std::vector<std::string>& arguments, EndNotice notice,
                            Pipe& output, Pipe& error) {
    LaunchSettings settings;
    settings.executable = command;
    settings.arguments = arguments;
    StandardStreams streams;
    streams.output = output.writeEnd.number();
    streams.error = error.writeEnd.number();
    SpawnedChild child = spawn(settings, streams, notice);
    output.writeEnd.close();
    error.writeEnd.close();
    return child;
  }

  /// Serves the command until the condition holds; false if the time is over before.
  template <typename Condition>
  bool wait(milliseconds time, const Condition& holds) {
    const auto deadline = steady_clock::now() + time;
    while (!holds()) {
      const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
      serve(std::max(left, milliseconds::zero()));
      if (left <= milliseconds::zero()) return holds();
    }
    return true;
  }

  /// Waits for the next thing to happen and deals with it.
  void serve(milliseconds atMost) {
    std::array<pollfd, 3> polled = {pollfd{output_.descriptor(), POLLIN, 0}, pollfd{error_.descriptor(), POLLIN, 0},
                                    pollfd{process_.endDescriptor(), POLLIN, 0}};
    if (::poll(polled.data(), polled.size(), static_cast<int>(atMost.count())) <= 0) return;
    if (polled[0].revents != 0) output_.read();
    if (polled[1].revents != 0) error_.read();
    if (polled[2].revents != 0) process_.reapIfEnded();
  }

  ProcessHandle process_;
  OrmelExecutableTrustOutput output_;
  OrmelExecutableTrustOutput error_;
};

milliseconds wholeMilliseconds(double seconds) {
  constexpr double longest = 24.0 * 60 * 60 * 1000;
  const double wanted = seconds * 1000;
  return milliseconds(std::isnan(wanted) ? 0 : static_cast<long long>(std::clamp(wanted, 0.0, longest)));
}

}  // namespace

TrustCommandOutcome runTrustCommand(const std::string& command, const std::vector<std::string>& arguments,
                                    double timeoutSeconds, const TrustCommandWaits& waits, EndNotice notice) {
  TrustCommandRun run(command, arguments, notice);
  if (!run.waitForEnd(wholeMilliseconds(timeoutSeconds))) {
    run.end(waits);
    throw OrmelExecutableTrustCommandError::timedOut(command, timeoutSeconds);
  }
  if (!run.waitForEndOfOutput(waits.output)) throw OrmelExecutableTrustCommandError::outputReadTimedOut(command);
  return run.outcome();
}

OrmelExecutableTrustCommandResult trustCommandResult(const std::string& command, TrustCommandOutcome outcome) {
  if (!outcome.status) {
    throw Error("Trust validation command " + command +
                " has ended, but its exit status is unknown: another part of this process has reaped it.");
  }
  return {*outcome.status, std::move(outcome.output)};
}

}  // namespace ormel::detail
