#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "ormel-simulator/Agent/AgentThread.h"

namespace ormel::simulator {

/// The threads that the agent knows: in memory, and those that are not ephemeral also in a folder, if it is given one.
/// Fails with `Error` where files cannot be used.
class AgentThreadStore {
 public:
  /// An empty path stands for no folder.
  explicit AgentThreadStore(std::filesystem::path folder);

  /// The reference stays good as long as the store.
  AgentThread& add(AgentThread thread);

  /// Null if there is no such thread. The pointer stays good as long as the store.
  AgentThread* find(const std::string& id);

  void save(const AgentThread& thread) const;

 private:
  std::filesystem::path file(const std::string& id) const { return folder_ / (id + ".json"); }

  std::filesystem::path folder_;
  std::map<std::string, AgentThread> threads_;
};

}  // namespace ormel::simulator
