#pragma once

#include <string>

#include "Server.h"

// The commands about apps, MCP servers and plugins.
namespace ormel::control {

Task<Report> listApps(Server server);
Task<Report> listInstalledApps(Server server);
Task<Report> listMcpServers(Server server);
Task<Report> listPlugins(Server server, std::string directory);
Task<Report> listInstalledPlugins(Server server, std::string directory);

}  // namespace ormel::control
