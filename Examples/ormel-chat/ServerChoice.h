#pragma once

#include <optional>
#include <string>

#include "OrmelSDK/Ormel.h"

namespace ormel::chat {

/// The library, set up with the server to talk to.
struct ServerChoice {
  Ormel ormel;
  /// Whether no server was found and the simulator stands in for one.
  bool isSimulator = false;
};

/// The named server; else the one that the library finds; else the simulator that lies beside this program. Fails with
/// `Error` if there is none.
ServerChoice chooseServer(const std::optional<std::string>& namedServer, const std::string& ownName);

}  // namespace ormel::chat
