#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "OrmelSDK/Options/OrmelExecutableTrust.h"

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

/// See `OrmelExecutableTrustPolicy::runSystemTrustCommand`.
OrmelExecutableTrustCommandResult runTrustCommand(const std::string& command, const std::vector<std::string>& arguments,
                                                  double timeoutSeconds, const TrustCommandWaits& waits);

}  // namespace ormel::detail
