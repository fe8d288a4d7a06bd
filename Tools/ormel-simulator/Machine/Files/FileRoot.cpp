#include "ormel-simulator/Machine/Files/FileRoot.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <system_error>
#include <utility>

#include "OrmelSDK/Base/Error.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

constexpr mode_t ownerOnlyMode = 0700;
constexpr mode_t usualFolderMode = 0777;
constexpr mode_t usualFileMode = 0666;
/// The deepest tree that is walked: a walk holds one descriptor for each level.
constexpr std::size_t deepest = 200;

detail::FileDescriptor openFolder(int folder, const std::string& name, const FileTask& task) {
  return openEntry(folder, name, O_RDONLY | O_DIRECTORY, task);
}

detail::FileDescriptor copyOf(const detail::FileDescriptor& folder, const FileTask& task) {
  auto copy = detail::FileDescriptor::duplicate(folder.number());
  if (!copy.isOpen()) task.failBy(errno);
  return copy;
}

bool leadsOut(const std::filesystem::path& relative) { return relative.empty() || *relative.begin() == ".."; }

}  // namespace

detail::FileDescriptor openEntry(int folder, const std::string& name, int flags, const FileTask& task) {
  detail::FileDescriptor opened(
      ::openat(folder, name.c_str(), flags | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, usualFileMode));
  if (opened.isOpen()) return opened;
  const int error = errno;
  struct stat found{};
  const bool isFound = ::fstatat(folder, name.c_str(), &found, AT_SYMLINK_NOFOLLOW) == 0;
  if (isFound && S_ISLNK(found.st_mode)) task.fail("\"" + name + "\" is a symbolic link, and none is followed");
  task.failBy(error);
}

std::vector<std::string> namesIn(const detail::FileDescriptor& folder, const FileTask& task) {
  // Reading moves the place in the open file, so it is one of its own.
  detail::FileDescriptor own = openFolder(folder.number(), ".", task);
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(::fdopendir(own.number()), ::closedir);
  if (!stream) task.failBy(errno);
  own.release();
  std::vector<std::string> names;
  errno = 0;
  while (const dirent* entry = ::readdir(stream.get())) {
    std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(std::move(name));
  }
  if (errno != 0) task.failBy(errno);
  std::sort(names.begin(), names.end());
  return names;
}

detail::FileDescriptor Place::open(int flags, const FileTask& task) const {
  return openEntry(folder.number(), name, flags, task);
}

struct stat Place::look(const FileTask& task) const {
  struct stat found{};
  if (::fstatat(folder.number(), name.c_str(), &found, AT_SYMLINK_NOFOLLOW) != 0) task.failBy(errno);
  return found;
}

// The name of a folder may end in a slash.
FileRoot::FileRoot(const std::filesystem::path& folder)
    : folder_(folder.has_filename() ? folder : folder.parent_path()) {}

void FileRoot::open() {
  if (descriptor_.isOpen()) return;
  if (folder_.empty()) {
    throw Refusal(invalidRequest,
                  "there is no folder for files, since the simulator keeps nothing; name one with --files or "
                  "ORMEL_SIMULATOR_FILES");
  }
  std::error_code error;
  if (folder_.has_parent_path()) std::filesystem::create_directories(folder_.parent_path(), error);
  if (!error && ::mkdir(folder_.c_str(), ownerOnlyMode) != 0 && errno != EEXIST) {
    error.assign(errno, std::generic_category());
  }
  if (!error) realFolder_ = std::filesystem::canonical(folder_, error);
  if (!error) {
    descriptor_ = detail::FileDescriptor(::open(realFolder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor_.isOpen()) error.assign(errno, std::generic_category());
  }
  if (error) throw Error("cannot use the folder for files, " + folder_.string() + ": " + error.message());
}

std::vector<std::string> FileRoot::stepsTo(const FileTask& task) {
  open();
  if (task.path().find('\0') != std::string::npos) task.fail("there is a zero byte in it");
  std::filesystem::path relative = std::filesystem::path(task.path()).lexically_normal();
  if (relative.is_absolute()) {
    // The client may know the folder by a name that leads through links.
    const std::filesystem::path named = std::filesystem::absolute(folder_).lexically_normal();
    const std::filesystem::path fromNamed = relative.lexically_relative(named);
    relative = leadsOut(fromNamed) ? relative.lexically_relative(realFolder_) : fromNamed;
  }
  if (leadsOut(relative)) task.fail("it lies outside of " + realFolder_.string());
  std::vector<std::string> steps;
  for (const auto& step : relative) {
    if (!step.empty() && step != ".") steps.push_back(step.string());
  }
  if (steps.size() > deepest) task.fail("it has more than " + std::to_string(deepest) + " folders");
  return steps;
}

Place FileRoot::find(const FileTask& task) {
  const std::vector<std::string> steps = stepsTo(task);
  Place place;
  place.folder = copyOf(descriptor_, task);
  place.name = steps.empty() ? "." : steps.back();
  place.absolutePath = realFolder_.string();
  for (std::size_t index = 0; index < steps.size(); ++index) {
    if (index + 1 < steps.size()) place.folder = openFolder(place.folder.number(), steps[index], task);
    place.relativePath += (index == 0 ? "" : "/") + steps[index];
    place.absolutePath += "/" + steps[index];
  }
  return place;
}

void FileRoot::makeFolders(const FileTask& task) {
  const std::vector<std::string> steps = stepsTo(task);
  detail::FileDescriptor folder = copyOf(descriptor_, task);
  for (const std::string& step : steps) {
    if (::mkdirat(folder.number(), step.c_str(), usualFolderMode) != 0 && errno != EEXIST) task.failBy(errno);
    folder = openFolder(folder.number(), step, task);
  }
}

}  // namespace ormel::simulator
