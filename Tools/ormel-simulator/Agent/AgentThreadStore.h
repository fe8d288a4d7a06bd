#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "ormel-simulator/Agent/AgentThread.h"
#include "ormel-simulator/Agent/ThreadFiles.h"

namespace ormel::simulator {

/// The threads that the agent knows: in memory, and those that are not ephemeral also in a folder, if it is given one.
///
/// Other processes may use the same folder. A change is made to the newest state, under the folder's lock, so that none
/// undoes another; a turn that is under way stays with the process that plays it.
///
/// References stay good until the thread is removed. Fails with `Error` where files cannot be used.
class AgentThreadStore {
 public:
  /// An empty path stands for no folder.
  explicit AgentThreadStore(std::filesystem::path folder);

  AgentThread& add(AgentThread thread);

  /// The thread in its newest state; null if there is none of that id.
  AgentThread* find(const std::string& id);

  /// Makes the change and keeps it. A thread that another process has deleted stays deleted.
  void change(AgentThread& thread, const std::function<void(AgentThread&)>& edit);

  void remove(const AgentThread& thread);

  /// All that are not ephemeral, in no particular order. A thread whose file is damaged is left out; `complain` gets
  /// the reason.
  std::vector<const AgentThread*> lasting(const std::function<void(const std::string&)>& complain);

  /// Notes that this process works with the thread.
  void load(const AgentThread& thread) { loaded_.insert(thread.id); }
  /// False if it did not.
  bool unload(const AgentThread& thread) { return loaded_.erase(thread.id) > 0; }
  std::vector<const AgentThread*> loaded();

  /// For people: how many threads there are, and where.
  std::string summary() const;

  const std::filesystem::path& folder() const noexcept { return files_.folder(); }

 private:
  struct Known {
    AgentThread thread;
    /// Stands for the state of the file that the thread in memory includes; absent if there is no file.
    std::optional<FileStamp> stamp;
  };

  bool hasFolder() const { return !folder().empty(); }
  bool isKeptInFile(const AgentThread& thread) const { return hasFolder() && !thread.ephemeral; }
  /// Takes over what others have changed. False if the file is gone.
  bool refresh(Known& known);
  void write(Known& known);

  ThreadFiles files_;
  std::map<std::string, Known> threads_;
  std::set<std::string> loaded_;
};

}  // namespace ormel::simulator
