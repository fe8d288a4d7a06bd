#pragma once

#include <optional>
#include <string>

#include "Server.h"

// The commands about conversations that the server keeps.
namespace ormel::control {

Task<Report> listThreads(Server server, std::optional<std::string> searchTerm, bool archived);
Task<Report> readThread(Server server, std::string id);
Task<Report> forkThread(Server server, std::string id);
Task<Report> archiveThread(Server server, std::string id);
Task<Report> unarchiveThread(Server server, std::string id);
Task<Report> renameThread(Server server, std::string id, std::string name);
Task<Report> deleteThread(Server server, std::string id);

}  // namespace ormel::control
