#include "ormel-simulator/Machine/Files/TreeRequests.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>

#include "ormel-simulator/Machine/Files/FileBytes.h"
#include "ormel-simulator/Requests/RequestParams.h"

namespace ormel::simulator {

namespace {

constexpr mode_t permissionBits = 0777;
constexpr mode_t ownerCanFill = 0700;

/// An entry of an open folder.
struct TreeEntry {
  int folder;
  const std::string& name;
};

struct stat lookAt(const TreeEntry& entry, const FileTask& task) {
  struct stat found{};
  if (::fstatat(entry.folder, entry.name.c_str(), &found, AT_SYMLINK_NOFOLLOW) != 0) task.failBy(errno);
  return found;
}

void requireRecursion(bool recursive, const FileTask& task) {
  if (!recursive) task.fail("it is a folder; only recursive takes all that is in it");
}

void removeEntry(const TreeEntry& entry, bool recursive, const FileTask& task) {
  const bool isFolder = S_ISDIR(lookAt(entry, task).st_mode);
  if (isFolder) {
    requireRecursion(recursive, task);
    const auto folder = openEntry(entry.folder, entry.name, O_RDONLY | O_DIRECTORY, task);
    for (const std::string& name : namesIn(folder, task)) removeEntry({folder.number(), name}, recursive, task);
  }
  if (::unlinkat(entry.folder, entry.name.c_str(), isFolder ? AT_REMOVEDIR : 0) != 0) task.failBy(errno);
}

void copyFile(const TreeEntry& from, const TreeEntry& to, const FileTask& task) {
  const auto source = openEntry(from.folder, from.name, O_RDONLY, task);
  requireRegularFile(source, task);
  const auto copy = openEntry(to.folder, to.name, O_WRONLY | O_CREAT, task);
  requireRegularFile(copy, task);
  struct stat original{};
  struct stat target{};
  if (::fstat(source.number(), &original) != 0 || ::fstat(copy.number(), &target) != 0) task.failBy(errno);
  if (original.st_dev == target.st_dev && original.st_ino == target.st_ino) task.fail("both are the same file");
  if (::ftruncate(copy.number(), 0) != 0) task.failBy(errno);
  copyBytes(source, copy, task);
  if (::fchmod(copy.number(), original.st_mode & permissionBits) != 0) task.failBy(errno);
}

void copyLink(const TreeEntry& from, const TreeEntry& to, const FileTask& task) {
  std::array<char, PATH_MAX> target;
  const ssize_t size = ::readlinkat(from.folder, from.name.c_str(), target.data(), target.size() - 1);
  if (size < 0) task.failBy(errno);
  target.at(static_cast<std::size_t>(size)) = '\0';
  if (::symlinkat(target.data(), to.folder, to.name.c_str()) != 0) task.failBy(errno);
}

void copyEntry(const TreeEntry& from, const TreeEntry& to, bool recursive, const FileTask& task) {
  const struct stat found = lookAt(from, task);
  if (S_ISREG(found.st_mode)) return copyFile(from, to, task);
  if (S_ISLNK(found.st_mode)) return copyLink(from, to, task);
  if (!S_ISDIR(found.st_mode)) task.fail("it is neither a file, a folder nor a link");
  requireRecursion(recursive, task);
  const auto source = openEntry(from.folder, from.name, O_RDONLY | O_DIRECTORY, task);
  const mode_t mode = found.st_mode & permissionBits;
  if (::mkdirat(to.folder, to.name.c_str(), mode | ownerCanFill) != 0) task.failBy(errno);
  const auto copy = openEntry(to.folder, to.name, O_RDONLY | O_DIRECTORY, task);
  for (const std::string& name : namesIn(source, task)) {
    copyEntry({source.number(), name}, {copy.number(), name}, recursive, task);
  }
}

JSONValue removePath(FileRoot& root, const RequestParams& params) {
  const FileTask task("remove", params.text("path"));
  const bool recursive = params.flag("recursive");
  const bool force = params.flag("force");
  const Place place = root.find(task);
  if (place.isRoot()) task.fail("it is the folder that all files are in");
  struct stat found{};
  const bool isMissing =
      ::fstatat(place.folder.number(), place.name.c_str(), &found, AT_SYMLINK_NOFOLLOW) != 0 && errno == ENOENT;
  if (!isMissing || !force) removeEntry({place.folder.number(), place.name}, recursive, task);
  return JSONValue::object();
}

bool isInside(const Place& inner, const Place& outer) {
  return outer.isRoot() || inner.relativePath == outer.relativePath ||
         inner.relativePath.starts_with(outer.relativePath + "/");
}

JSONValue copyPath(FileRoot& root, const RequestParams& params) {
  const FileTask task("copy", params.text("sourcePath"));
  const FileTask targetTask("copy to", params.text("destinationPath"));
  const Place from = root.find(task);
  const Place to = root.find(targetTask);
  const bool isFolder = S_ISDIR(from.look(task).st_mode);
  if (isFolder && isInside(to, from)) task.fail(targetTask.path() + " lies in it");
  copyEntry({from.folder.number(), from.name}, {to.folder.number(), to.name}, params.flag("recursive"), task);
  return JSONValue::object();
}

}  // namespace

void addTreeRequests(RequestTable& table, FileRoot& root) {
  table["fs/remove"] = [&root](const JSONValue& params) { return removePath(root, RequestParams(params)); };
  table["fs/copy"] = [&root](const JSONValue& params) { return copyPath(root, RequestParams(params)); };
}

}  // namespace ormel::simulator
