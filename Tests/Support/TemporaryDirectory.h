#pragma once

#include <stdlib.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

namespace ormel::tests {

/// A directory of its own for one test, removed with everything in it.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "ormel-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::system_error(errno, std::generic_category(), "mkdtemp");
    // The system's own directory may lie behind a symbolic link.
    path_ = std::filesystem::canonical(name);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  std::string path() const { return path_.string(); }
  std::string operator/(std::string_view relative) const { return (path_ / relative).string(); }

  /// Makes a directory, with those above it.
  std::string addDirectory(std::string_view relative) const {
    std::filesystem::create_directories(path_ / relative);
    return *this / relative;
  }

  /// Makes a file that may be read and not executed.
  std::string addFile(std::string_view relative, std::string_view contents = "") const {
    const auto file = path_ / relative;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << contents;
    return file.string();
  }

  /// Makes a file that may be executed.
  std::string addExecutable(std::string_view relative, std::string_view contents = "#!/bin/sh\n") const {
    const std::string file = addFile(relative, contents);
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    return file;
  }

  /// Makes a symbolic link.
  std::string addLink(std::string_view relative, std::string_view target) const {
    const auto link = path_ / relative;
    std::filesystem::create_directories(link.parent_path());
    std::filesystem::create_symlink(target, link);
    return link.string();
  }

 private:
  std::filesystem::path path_;
};

}  // namespace ormel::tests
