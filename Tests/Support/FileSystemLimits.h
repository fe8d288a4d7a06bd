#pragma once

#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <string>
#include <system_error>

namespace ormel::testing {

/// Sets an environment variable, and sets it back at the end.
class EnvironmentVariableSet {
 public:
  EnvironmentVariableSet(std::string name, const std::string& value) : name_(std::move(name)) {
    if (const char* before = ::getenv(name_.c_str())) before_ = before;
    ::setenv(name_.c_str(), value.c_str(), 1);
  }
  EnvironmentVariableSet(const EnvironmentVariableSet&) = delete;
  EnvironmentVariableSet& operator=(const EnvironmentVariableSet&) = delete;
  ~EnvironmentVariableSet() {
    if (before_) {
      ::setenv(name_.c_str(), before_->c_str(), 1);
    } else {
      ::unsetenv(name_.c_str());
    }
  }

 private:
  std::string name_;
  std::optional<std::string> before_;
};

/// As long as it lives no file can grow beyond a size, in bytes, as on a full disk.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t size) : ignored_(::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limited{size, before_.rlim_max};
    if (::setrlimit(RLIMIT_FSIZE, &limited) != 0) throw std::system_error(errno, std::generic_category(), "setrlimit");
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    ::signal(SIGXFSZ, ignored_);
  }

 private:
  void (*ignored_)(int);
  rlimit before_{};
};

/// As long as it lives nothing can be made or removed in a directory, not even where the tests run as root.
class DirectoryLocked {
 public:
  explicit DirectoryLocked(std::string path) : path_(std::move(path)) {
    constexpr uid_t nobody = 65534;
    ::chmod(path_.c_str(), S_IRUSR | S_IXUSR | S_IRGRP | S_IXGRP | S_IROTH | S_IXOTH);
    if (user_ == 0 && ::seteuid(nobody) != 0) throw std::system_error(errno, std::generic_category(), "seteuid");
  }
  DirectoryLocked(const DirectoryLocked&) = delete;
  DirectoryLocked& operator=(const DirectoryLocked&) = delete;
  ~DirectoryLocked() {
    if (user_ == 0 && ::seteuid(user_) != 0) ::abort();
    ::chmod(path_.c_str(), S_IRWXU);
  }

 private:
  std::string path_;
  uid_t user_ = ::geteuid();
};

}  // namespace ormel::testing
