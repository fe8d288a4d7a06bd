#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Options/OrmelExecutableTrust.h"
#include "OrmelSDK/Platform/Spawn.h"

namespace ormel::detail {

/// How long each step waits after a command had its time.
struct TrustCommandWaits {
  TrustCommandWaits() = default;

  /// The wait for the end of a command that was asked to end.
  std::chrono::milliseconds termination{250};
  /// The wait for the end of a command that was killed.
  std::chrono::milliseconds kill{1000};
  /// The wait for the end of the output of a command that has ended.
  std::chrono::milliseconds output{1000};
};

/// The outcome of a command of the trust check.
struct TrustCommandOutcome {
  /// The exit status, or the number of the signal that ended the command. Absent if another part of this process has
  /// reaped the command, and the system does not tell the status to anyone else.
  std::optional<std::int32_t> status;
  std::string output;
  friend bool operator==(const TrustCommandOutcome&, const TrustCommandOutcome&) = default;
};

/// See `OrmelExecutableTrustPolicy::runSystemTrustCommand`.
TrustCommandOutcome runTrustCommand(const std::string& command, const std::vector<std::string>& arguments,
                                    double timeoutSeconds, const TrustCommandWaits& waits,
                                    EndNotice notice = EndNotice::automatic);

/// The outcome as a result. Fails with an `Error` that says why if nobody knows the status.
OrmelExecutableTrustCommandResult trustCommandResult(const std::string& command, TrustCommandOutcome outcome);

/// `OrmelExecutableTrustPolicy::assess`, from outcomes. An unknown status rejects, but for a tool of which only the
/// words count.
OrmelExecutableTrustAssessment assessByOutcomes(
    const std::string& executablePath,
    const std::function<TrustCommandOutcome(const std::string& command, const std::vector<std::string>& arguments)>&
        run);

}  // namespace ormel::detail
