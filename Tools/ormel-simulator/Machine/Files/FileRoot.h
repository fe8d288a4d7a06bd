#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "OrmelSDK/Platform/FileDescriptor.h"
#include "ormel-simulator/Machine/Files/FileTask.h"

namespace ormel::simulator {

/// Where something stands, or may be made: a name in an open folder, which was reached without following a link.
struct Place {
  detail::FileDescriptor folder;
  /// "." for the root itself.
  std::string name;
  /// From the root, without a slash at its ends.
  std::string relativePath;
  /// The path in the real file system.
  std::string absolutePath;

  bool isRoot() const noexcept { return relativePath.empty(); }

  /// Opens what stands there, if it is no link; close-on-exec, and without waiting for the other end of a named pipe.
  detail::FileDescriptor open(int flags, const FileTask& task) const;

  /// The status of what stands there, which may be a link.
  struct stat look(const FileTask& task) const;
};

/// The one folder whose files a client may touch.
///
/// A path is taken from the root on, unless it is absolute: then it must name something in the root. No link is ever
/// followed, and each step is made from an open folder, so that nothing that changes meanwhile leads out of the root.
/// All members fail with `Refusal`.
class FileRoot {
 public:
  /// Made when the first path is asked for. An empty one stands for no folder, in which nothing is found.
  explicit FileRoot(const std::filesystem::path& folder);

  /// The place that the path names, in a folder that exists.
  Place find(const FileTask& task);

  /// Makes the folder that the path names, with those above it that are missing.
  void makeFolders(const FileTask& task);

 private:
  void open();
  std::vector<std::string> stepsTo(const FileTask& task);

  std::filesystem::path folder_;
  std::filesystem::path realFolder_;
  detail::FileDescriptor descriptor_;
};

/// Opens a folder's entry without following a link; the other flags are those of the caller.
detail::FileDescriptor openEntry(int folder, const std::string& name, int flags, const FileTask& task);

/// The names in an open folder, in order, without "." and "..".
std::vector<std::string> namesIn(const detail::FileDescriptor& folder, const FileTask& task);

}  // namespace ormel::simulator
