#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ormel-simulator/Catalogue/Catalogue.h"

namespace ormel::simulator {

struct McpServer {
  std::string name;
  JSONValue data;
  /// As it is told: "connected", "authenticationRequired", "failed" or "disabled".
  std::string runtimeStatus;
  std::string authStatus;

  bool isConnected() const { return runtimeStatus == "connected"; }
  bool hasLogin() const;
  JSONValue statusJSON(bool isFull) const;
};

/// The servers that come with the system or an active plugin, and those that the user's configuration adds.
std::vector<McpServer> knownMcpServers(const CatalogueView& view);

/// Fails with `Refusal` if there is none of that name.
McpServer knownMcpServer(const CatalogueView& view, const std::string& name);

}  // namespace ormel::simulator
