#pragma once

#include <stdlib.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

namespace ormel::testing {

/// A fresh directory with a short path, removed with all that is in it at the end.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = "/tmp/ormel-XXXXXX";
    if (!::mkdtemp(name.data())) throw std::system_error(errno, std::generic_category(), "mkdtemp");
    // Where "/tmp" is a symbolic link, a resolved path would not be found again under the given one.
    path_ = std::filesystem::canonical(name);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& path() const noexcept { return path_; }

  /// The path of what stands, or may be made, at `relative`.
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

}  // namespace ormel::testing
