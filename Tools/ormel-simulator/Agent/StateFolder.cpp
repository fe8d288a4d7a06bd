#include "ormel-simulator/Agent/StateFolder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "OrmelSDK/Base/Error.h"

namespace ormel::simulator {

namespace {

constexpr mode_t ownerOnly = 0700;
constexpr mode_t othersToo = 0077;

std::filesystem::path usersOwnFolder() {
  std::error_code error;
  const auto temporary = std::filesystem::temp_directory_path(error);
  if (error) throw Error("there is no temporary directory to keep threads in: " + error.message());
  return temporary / ("ormel-simulator-" + std::to_string(::geteuid()));
}

/// Why nothing may be kept in the folder; null if there is no reason.
const char* objection(const std::filesystem::path& folder) {
  struct stat found{};
  if (::lstat(folder.c_str(), &found) != 0) return "it cannot be looked at";
  if (S_ISLNK(found.st_mode)) return "it is a link";
  if (!S_ISDIR(found.st_mode)) return "it is no folder";
  if (found.st_uid != ::geteuid()) return "it belongs to another user";
  if ((found.st_mode & othersToo) != 0) return "it is open to other users";
  return nullptr;
}

std::filesystem::path openUsersOwnFolder() {
  const auto folder = usersOwnFolder();
  if (::mkdir(folder.c_str(), ownerOnly) != 0 && errno != EEXIST) {
    throw Error("cannot make the folder " + folder.string() + ": " + std::generic_category().message(errno));
  }
  if (const char* fault = objection(folder)) {
    throw Error("threads are not kept in " + folder.string() + ", because " + fault +
                "; remove it, name another folder with --state or ORMEL_SIMULATOR_STATE, or keep none with --forget");
  }
  return folder;
}

}  // namespace

std::filesystem::path openStateFolder(const AgentSettings& settings) {
  if (settings.forgets) return {};
  if (settings.stateFolder.empty()) return openUsersOwnFolder();
  std::error_code error;
  std::filesystem::create_directories(settings.stateFolder, error);
  if (error) throw Error("cannot make the folder " + settings.stateFolder.string() + ": " + error.message());
  return std::filesystem::absolute(settings.stateFolder);
}

std::filesystem::path folderForFiles(const AgentSettings& settings, const std::filesystem::path& stateFolder) {
  if (!settings.filesFolder.empty()) return std::filesystem::absolute(settings.filesFolder);
  return stateFolder.empty() ? stateFolder : stateFolder / "files";
}

}  // namespace ormel::simulator
