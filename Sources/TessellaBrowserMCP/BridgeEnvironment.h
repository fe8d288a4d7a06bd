#pragma once

#include <string>

namespace ormel {

/// The bridge's configuration, read from environment variables.
struct BridgeEnvironment {
  std::string socketPath;
  std::string workspacePath;
  std::string token;

  /// Fails with `BridgeFailure::missingEnvironment` for the first variable that is unset or empty.
  static BridgeEnvironment read();
};

}  // namespace ormel
