#include "ormel-simulator/Agent/AgentThreadStore.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

#include "OrmelSDK/Base/Error.h"

namespace ormel::simulator {

namespace {

// A client chooses the ids that it asks for: none may lead out of the folder.
bool canNameAFile(const std::string& id) {
  return !id.empty() &&
         std::all_of(id.begin(), id.end(), [](unsigned char byte) { return std::isalnum(byte) != 0 || byte == '-'; });
}

}  // namespace

AgentThreadStore::AgentThreadStore(std::filesystem::path folder) : folder_(std::move(folder)) {
  std::error_code error;
  if (!folder_.empty()) std::filesystem::create_directories(folder_, error);
  if (error) throw Error("cannot make the folder " + folder_.string() + ": " + error.message());
}

AgentThread& AgentThreadStore::add(AgentThread thread) {
  const std::string id = thread.id;
  AgentThread& kept = threads_.insert_or_assign(id, std::move(thread)).first->second;
  save(kept);
  return kept;
}

AgentThread* AgentThreadStore::find(const std::string& id) {
  const auto known = threads_.find(id);
  if (known != threads_.end()) return &known->second;
  if (folder_.empty() || !canNameAFile(id)) return nullptr;
  std::ifstream stream(file(id), std::ios::binary);
  if (!stream) return nullptr;
  const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  return &threads_.emplace(id, AgentThread::fromStateJSON(JSONValue::decode(text))).first->second;
}

void AgentThreadStore::save(const AgentThread& thread) const {
  if (folder_.empty() || thread.ephemeral) return;
  // Whoever reads it finds the old state or the new one, also if this process dies in between.
  const std::filesystem::path partial = file(thread.id).string() + ".partial";
  std::ofstream stream(partial, std::ios::binary);
  stream << thread.stateJSON().encode();
  stream.close();
  std::error_code error;
  if (stream) std::filesystem::rename(partial, file(thread.id), error);
  if (!stream || error) throw Error("cannot write the thread " + file(thread.id).string());
}

}  // namespace ormel::simulator
