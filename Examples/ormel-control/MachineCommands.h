#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Server.h"

// The commands about files and programs on the server's machine, and the one for any call.
namespace ormel::control {

Task<Report> listDirectory(Server server, std::string path);
Task<Report> printFile(Server server, std::string path);

/// Runs a program. The report's status is the program's.
Task<Report> runProgram(Server server, std::vector<std::string> command, std::string directory,
                        std::optional<std::int64_t> timeoutSeconds);

/// Makes any call; its result is printed as JSON.
Task<Report> callMethod(Server server, std::string method, std::optional<JSONValue> params);

}  // namespace ormel::control
