#pragma once

#include <string>

namespace ormel {

/// What the bridge is told by the environment of its process.
struct BridgeEnvironment {
  std::string socketPath;
  std::string workspacePath;
  std::string token;

  /// Fails with `BridgeFailure::missingEnvironment` for the first variable that is unset or empty.
  static BridgeEnvironment read();
};

}  // namespace ormel
