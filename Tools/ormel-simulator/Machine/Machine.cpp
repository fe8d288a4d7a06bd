#include "ormel-simulator/Machine/Machine.h"

#include "ormel-simulator/Machine/Files/FileRequests.h"
#include "ormel-simulator/Machine/Files/TreeRequests.h"
#include "ormel-simulator/Machine/Git/GitDiffRequest.h"
#include "ormel-simulator/Machine/Search/FileSearchRequest.h"

namespace ormel::simulator {

Machine::Machine(AgentClient& client, const std::filesystem::path& files)
    : files_(files), watches_(files_, client), commandRequests_(commands_, client) {}

void Machine::addRequests(RequestTable& table) {
  addFileRequests(table, files_);
  addTreeRequests(table, files_);
  watches_.addRequests(table);
  commandRequests_.add(table);
  addFileSearchRequest(table);
  addGitDiffRequest(table, commands_);
}

std::vector<pollfd> Machine::descriptors() const {
  std::vector<pollfd> descriptors;
  watches_.addDescriptors(descriptors);
  commands_.addDescriptors(descriptors);
  return descriptors;
}

void Machine::serve() {
  commands_.serve();
  watches_.serve();
}

}  // namespace ormel::simulator
