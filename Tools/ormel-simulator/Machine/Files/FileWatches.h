#pragma once

#include <poll.h>

#include <map>
#include <string>
#include <vector>

#include "ormel-simulator/Machine/Files/FileRoot.h"
#include "ormel-simulator/Machine/Platform/FolderWatch.h"
#include "ormel-simulator/Requests/AgentClient.h"
#include "ormel-simulator/Requests/RequestTable.h"

namespace ormel::simulator {

/// Tells the client when something changes at a path, until it wants to know no more.
class FileWatches {
 public:
  FileWatches(FileRoot& root, AgentClient& client) : root_(root), client_(client) {}

  void addRequests(RequestTable& table);
  void addDescriptors(std::vector<pollfd>& descriptors) const;

  /// Reports what has changed.
  void serve();

 private:
  struct Watch {
    FolderWatch folder;
    std::string folderPath;
    /// The only entry that counts; empty where the folder is meant.
    std::string name;
  };

  JSONValue watch(const JSONValue& params);
  JSONValue unwatch(const JSONValue& params);
  void report(const std::string& id, Watch& watch);

  FileRoot& root_;
  AgentClient& client_;
  std::map<std::string, Watch> watches_;
};

}  // namespace ormel::simulator
