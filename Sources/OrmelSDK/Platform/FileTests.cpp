#include "OrmelSDK/Platform/FileTests.h"

#include <unistd.h>

#include <filesystem>
#include <system_error>

namespace ormel::detail {

namespace {

// The system would read such a path only up to the zero byte and test another file.
bool namesAFile(const std::string& path) { return !path.empty() && path.find('\0') == std::string::npos; }

bool isAccessibleFile(const std::string& path, int mode) {
  std::error_code failure;
  return namesAFile(path) && std::filesystem::is_regular_file(path, failure) && ::access(path.c_str(), mode) == 0;
}

}  // namespace

bool isExecutableFile(const std::string& path) { return isAccessibleFile(path, X_OK); }

bool isReadableFile(const std::string& path) { return isAccessibleFile(path, R_OK); }

bool isDirectory(const std::string& path) {
  std::error_code failure;
  return namesAFile(path) && std::filesystem::is_directory(path, failure);
}

std::vector<std::string> directoryEntries(const std::string& path) {
  std::vector<std::string> entries;
  if (!namesAFile(path)) return entries;
  std::error_code failure;
  std::filesystem::directory_iterator entry(path, failure);
  while (!failure && entry != std::filesystem::directory_iterator()) {
    entries.push_back(entry->path().string());
    entry.increment(failure);
  }
  return entries;
}

std::string resolvedPath(const std::string& path) {
  std::error_code failure;
  const auto absolute = std::filesystem::absolute(path, failure);
  if (failure) return path;
  const auto resolved = std::filesystem::weakly_canonical(absolute, failure);
  return (failure ? absolute.lexically_normal() : resolved).string();
}

}  // namespace ormel::detail
