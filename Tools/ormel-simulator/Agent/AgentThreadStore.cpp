#include "ormel-simulator/Agent/AgentThreadStore.h"

#include <algorithm>
#include <utility>

#include "OrmelSDK/Base/Error.h"
#include "ormel-simulator/Requests/FolderLock.h"

namespace ormel::simulator {

namespace {

/// The state from the file, with what only this process knows.
void takeOverNewer(AgentThread& thread, AgentThread newer) {
  for (AgentTurnRecord& turn : thread.turns) {
    if (!newer.findTurn(turn.id)) newer.turns.push_back(std::move(turn));
  }
  newer.sessionApprovals = std::move(thread.sessionApprovals);
  thread = std::move(newer);
}

}  // namespace

AgentThreadStore::AgentThreadStore(std::filesystem::path folder) : files_(std::move(folder)) {}

AgentThread& AgentThreadStore::add(AgentThread thread) {
  const std::string id = thread.id;
  Known& known = threads_.insert_or_assign(id, Known{std::move(thread), std::nullopt}).first->second;
  if (isKeptInFile(known.thread)) {
    const FolderLock lock(folder());
    write(known);
  }
  return known.thread;
}

AgentThread* AgentThreadStore::find(const std::string& id) {
  const auto entry = threads_.find(id);
  if (entry != threads_.end()) return refresh(entry->second) ? &entry->second.thread : nullptr;
  const auto stamp = hasFolder() ? files_.stamp(id) : std::nullopt;
  if (!stamp) return nullptr;
  return &threads_.emplace(id, Known{files_.read(id), stamp}).first->second.thread;
}

void AgentThreadStore::change(AgentThread& thread, const std::function<void(AgentThread&)>& edit) {
  Known& known = threads_.at(thread.id);
  if (!isKeptInFile(thread)) return edit(thread);
  const FolderLock lock(folder());
  const bool exists = refresh(known);
  edit(thread);
  if (exists) write(known);
}

void AgentThreadStore::remove(const AgentThread& thread) {
  const std::string id = thread.id;
  if (isKeptInFile(thread)) {
    const FolderLock lock(folder());
    files_.remove(id);
  }
  loaded_.erase(id);
  threads_.erase(id);
}

bool AgentThreadStore::refresh(Known& known) {
  if (!known.stamp) return true;
  const auto stamp = files_.stamp(known.thread.id);
  if (!stamp) return false;
  if (*stamp == *known.stamp) return true;
  takeOverNewer(known.thread, files_.read(known.thread.id));
  known.stamp = stamp;
  return true;
}

void AgentThreadStore::write(Known& known) {
  files_.write(known.thread);
  known.thread.path = files_.path(known.thread.id).string();
  known.stamp = files_.stamp(known.thread.id);
}

std::vector<const AgentThread*> AgentThreadStore::lasting(const std::function<void(const std::string&)>& complain) {
  std::set<std::string> ids;
  if (hasFolder()) {
    const auto kept = files_.ids();
    ids.insert(kept.begin(), kept.end());
  }
  for (const auto& [id, known] : threads_) ids.insert(id);
  std::vector<const AgentThread*> found;
  for (const std::string& id : ids) {
    try {
      const AgentThread* thread = find(id);
      if (thread && !thread->ephemeral) found.push_back(thread);
    } catch (const Error& error) {
      complain(error.description());
    }
  }
  return found;
}

std::vector<const AgentThread*> AgentThreadStore::loaded() {
  std::vector<const AgentThread*> found;
  for (const std::string& id : loaded_) {
    if (const AgentThread* thread = find(id)) found.push_back(thread);
  }
  return found;
}

std::string AgentThreadStore::summary() const {
  const auto counted = [](std::size_t count) { return std::to_string(count) + (count == 1 ? " thread" : " threads"); };
  if (hasFolder()) return "the simulator remembers " + counted(files_.ids().size()) + " in " + folder().string();
  return "the simulator keeps no threads, and remembers " + counted(threads_.size()) + " of this process";
}

}  // namespace ormel::simulator
