#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace ormel {

/// The answer to the question whether a server executable may be started.
///
/// *Thread safety*: an immutable value.
class OrmelExecutableTrustAssessment {
 public:
  enum class Kind { rejected, trusted };

  /// The executable must not be started; `reason` is for the application's own diagnosis and is not shown to the
  /// user.
  static OrmelExecutableTrustAssessment rejected(std::string reason) {
    return OrmelExecutableTrustAssessment(Kind::rejected, std::move(reason));
  }

  /// The executable may be started.
  static OrmelExecutableTrustAssessment trusted() { return OrmelExecutableTrustAssessment(Kind::trusted, {}); }

  Kind kind() const noexcept { return kind_; }
  bool isTrusted() const noexcept { return kind_ == Kind::trusted; }

  /// Why the executable was rejected; empty for a trusted one.
  const std::string& reason() const noexcept { return reason_; }

  friend bool operator==(const OrmelExecutableTrustAssessment&,
                         const OrmelExecutableTrustAssessment&) noexcept = default;

 private:
  OrmelExecutableTrustAssessment(Kind kind, std::string reason) : kind_(kind), reason_(std::move(reason)) {}

  Kind kind_;
  std::string reason_;
};

/// How a command ended that was run to assess an executable.
struct OrmelExecutableTrustCommandResult {
  OrmelExecutableTrustCommandResult() = default;
  OrmelExecutableTrustCommandResult(std::int32_t commandExitCode, std::string commandOutput)
      : exitCode(commandExitCode), output(std::move(commandOutput)) {}

  /// The exit status, or the number of the signal that ended the command.
  std::int32_t exitCode = 0;
  /// The output of the command: its standard output, followed by its standard error.
  std::string output;

  friend bool operator==(const OrmelExecutableTrustCommandResult&,
                         const OrmelExecutableTrustCommandResult&) noexcept = default;
};

}  // namespace ormel
