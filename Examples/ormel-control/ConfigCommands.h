#pragma once

#include <string>
#include <vector>

#include "Server.h"

// The commands about the configuration that is in force in a directory.
namespace ormel::control {

/// The keys of a path such as `a."b.c".d`. Fails with `Error`.
std::vector<std::string> keysOfPath(const std::string& path);

Task<Report> listConfig(Server server, std::string directory);
Task<Report> getConfig(Server server, std::string directory, std::string path);
Task<Report> setConfig(Server server, std::string path, JSONValue value);

}  // namespace ormel::control
