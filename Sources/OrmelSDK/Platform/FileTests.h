#pragma once

#include <string>
#include <vector>

namespace ormel::detail {

/// Whether the path leads to a regular file that this process may execute.
bool isExecutableFile(const std::string& path);

/// Whether the path leads to a regular file that this process may read.
bool isReadableFile(const std::string& path);

/// Whether the path leads to a directory.
bool isDirectory(const std::string& path);

/// The paths of a directory's entries in the order that the system gives; none if it cannot be listed.
std::vector<std::string> directoryEntries(const std::string& path);

/// The absolute path with symbolic links resolved and without "." and "..". Where something on the way does not
/// exist, the rest is taken as it stands.
std::string resolvedPath(const std::string& path);

}  // namespace ormel::detail
