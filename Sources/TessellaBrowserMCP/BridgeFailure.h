#pragma once

#include <string_view>

#include "OrmelSDK/Base/Error.h"

namespace ormel {

/// A failure between the bridge and its host.
class BridgeFailure : public Error {
 public:
  enum class Kind {
    missingEnvironment,
    connectFailed,
    invalidSocketPath,
    payloadTooLarge,
    disconnected,
    invalidResponse
  };

  static BridgeFailure missingEnvironment(std::string_view name);
  static BridgeFailure connectFailed(int errorNumber);
  static BridgeFailure invalidSocketPath();
  static BridgeFailure payloadTooLarge();
  static BridgeFailure disconnected();
  static BridgeFailure invalidResponse();

  Kind kind() const noexcept { return kind_; }

 private:
  BridgeFailure(Kind kind, std::string description) : Error(std::move(description)), kind_(kind) {}

  Kind kind_;
};

}  // namespace ormel
