#pragma once

#include <string>

#include "Server.h"

// The commands that list what the server offers. Directories are those whose configuration is in force.
namespace ormel::control {

Task<Report> listModels(Server server, bool withHidden);
Task<Report> listPermissions(Server server, std::string directory);
Task<Report> listFeatures(Server server);
Task<Report> listSkills(Server server, std::string directory);
Task<Report> listHooks(Server server, std::string directory);

}  // namespace ormel::control
