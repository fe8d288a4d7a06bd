#include "TessellaBrowserMCP/BridgeFailure.h"

#include <string>

namespace ormel {

BridgeFailure BridgeFailure::missingEnvironment(std::string_view name) {
  return {Kind::missingEnvironment, "Missing " + std::string(name) + "."};
}

BridgeFailure BridgeFailure::connectFailed(int errorNumber) {
  return {Kind::connectFailed,
          "Could not connect to Kestrion's browser socket (errno " + std::to_string(errorNumber) + ")."};
}

BridgeFailure BridgeFailure::invalidSocketPath() {
  return {Kind::invalidSocketPath, "The Kestrion browser socket path is invalid."};
}

BridgeFailure BridgeFailure::payloadTooLarge() {
  return {Kind::payloadTooLarge, "The browser message exceeded the bridge limit."};
}

BridgeFailure BridgeFailure::disconnected() { return {Kind::disconnected, "Kestrion's browser socket disconnected."}; }

BridgeFailure BridgeFailure::invalidResponse() {
  return {Kind::invalidResponse, "Kestrion returned an invalid browser response."};
}

}  // namespace ormel
