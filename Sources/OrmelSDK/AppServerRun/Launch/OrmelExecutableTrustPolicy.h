#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/Base/Error.h"
#include "OrmelSDK/Options/OrmelExecutableTrust.h"

namespace ormel {

/// A command of the trust check did not come to its end.
///
/// *Thread safety*: an immutable value.
class OrmelExecutableTrustCommandError : public Error {
 public:
  enum class Kind {
    /// The command ran for longer than it may.
    timedOut,
    /// The command ended, but another process still holds its output open.
    outputReadTimedOut,
  };

  static OrmelExecutableTrustCommandError timedOut(std::string command, double timeoutSeconds);
  static OrmelExecutableTrustCommandError outputReadTimedOut(std::string command);

  Kind kind() const noexcept { return kind_; }

  /// The path of the command.
  const std::string& command() const noexcept { return command_; }

  /// How long the command was given, in seconds; 0 for `outputReadTimedOut`.
  double timeoutSeconds() const noexcept { return timeoutSeconds_; }

 protected:
  std::string generalAdvice() const override;

 private:
  OrmelExecutableTrustCommandError(Kind kind, std::string command, double timeoutSeconds, std::string description);

  Kind kind_;
  std::string command_;
  double timeoutSeconds_;
};

/// Runs one command of the trust check, given its path and its arguments. An exception rejects the executable.
using OrmelExecutableTrustCommandRunner = std::function<OrmelExecutableTrustCommandResult(
    const std::string& command, const std::vector<std::string>& arguments)>;

/// Decides whether a server executable is a genuine build that nobody has blocked, by asking the code-signing tools
/// of macOS. It fails closed: an executable that cannot be checked is rejected, as each is where there are no such
/// tools.
///
/// *Thread safety*: all operations may be called from any thread.
///
/// *Blocking*: the operations that run commands block their caller until these have ended, up to about 12 seconds for
/// each of three commands. They use no thread of the library and must not be called on one.
struct OrmelExecutableTrustPolicy {
  /// The publisher's team, as its signatures name it.
  static constexpr std::string_view velnorTeamIdentifier = "7QF918KZX4";

  OrmelExecutableTrustPolicy() = delete;

  /// Assesses the executable by the system's tools, each of which has 10 seconds; `commandRunner`, if there is one,
  /// runs them instead. Never fails: a failure is a rejection.
  static OrmelExecutableTrustAssessment assessSystemExecutable(
      const std::string& path, const OrmelExecutableTrustCommandRunner& commandRunner = {});

  /// The decision, from what `commandRunner` gives. Commands run one after another, and none after a rejection.
  /// Never fails: a failure of the runner is a rejection with that failure's text.
  static OrmelExecutableTrustAssessment assess(const std::string& executablePath,
                                               const OrmelExecutableTrustCommandRunner& commandRunner);

  /// Runs a program with the standard input and the environment of this process and waits for its end.
  ///
  /// Fails with `OrmelExecutableTrustCommandError`, or with another `Error` if the program cannot be started. A
  /// program that runs for too long is ended: first it is asked to, and a quarter of a second later it is killed.
  ///
  /// An application that ignores SIGCHLD or reaps every child does not disturb this on macOS and on Linux 6.15 and
  /// later. On an older Linux it can take the exit status away; then this fails with an `Error` that says so.
  static OrmelExecutableTrustCommandResult runSystemTrustCommand(const std::string& command,
                                                                 const std::vector<std::string>& arguments,
                                                                 double timeoutSeconds);

  /// The text in which a verdict is looked for: `output` in lower case, without the executable's own path at its
  /// start, which may hold such a word.
  static std::string gatekeeperVerdict(std::string_view output, std::string_view executablePath);
};

}  // namespace ormel
