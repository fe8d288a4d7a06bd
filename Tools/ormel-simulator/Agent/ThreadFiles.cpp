#include "ormel-simulator/Agent/ThreadFiles.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <system_error>

#include "OrmelSDK/Base/Error.h"

namespace ormel::simulator {

namespace {

// A client chooses the ids that it asks for: none may lead out of the folder.
bool canNameAFile(const std::string& id) {
  return !id.empty() &&
         std::all_of(id.begin(), id.end(), [](unsigned char byte) { return std::isalnum(byte) != 0 || byte == '-'; });
}

}  // namespace

std::vector<std::string> ThreadFiles::ids() const {
  std::vector<std::string> found;
  std::error_code error;
  std::filesystem::directory_iterator entry(folder_, error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    const std::filesystem::path& file = entry->path();
    if (file.extension() == ".json" && canNameAFile(file.stem().string())) found.push_back(file.stem().string());
  }
  if (error) throw Error("cannot list the threads in " + folder_.string() + ": " + error.message());
  return found;
}

std::optional<FileStamp> ThreadFiles::stamp(const std::string& id) const {
  struct stat found{};
  std::error_code error;
  if (!canNameAFile(id) || ::stat(path(id).c_str(), &found) != 0) return std::nullopt;
  const auto time = std::filesystem::last_write_time(path(id), error);
  if (error) return std::nullopt;
  return FileStamp{found.st_ino, static_cast<std::uintmax_t>(found.st_size), time};
}

AgentThread ThreadFiles::read(const std::string& id) const {
  const auto damaged = [&](const std::string& reason) {
    return Error("the thread's file " + path(id).string() + " is damaged: " + reason);
  };
  std::ifstream stream(path(id), std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  if (!stream) throw Error("the thread's file " + path(id).string() + " cannot be read");
  AgentThread thread;
  try {
    thread = AgentThread::fromStateJSON(JSONValue::decode(text));
  } catch (const Error& error) {
    throw damaged(error.description());
  }
  if (thread.id != id) throw damaged("it does not hold that thread");
  thread.path = path(id).string();
  return thread;
}

void ThreadFiles::write(const AgentThread& thread) const {
  const std::filesystem::path file = path(thread.id);
  const std::filesystem::path partial = file.string() + ".partial";
  std::ofstream stream(partial, std::ios::binary);
  stream << thread.stateJSON().encode();
  stream.close();
  std::error_code error;
  if (stream) std::filesystem::rename(partial, file, error);
  if (stream && !error) return;
  std::error_code ignored;
  std::filesystem::remove(partial, ignored);
  throw Error("cannot write the thread's file " + file.string());
}

void ThreadFiles::remove(const std::string& id) const {
  std::error_code error;
  std::filesystem::remove(path(id), error);
  if (error) throw Error("cannot remove the thread's file " + path(id).string() + ": " + error.message());
}

}  // namespace ormel::simulator
