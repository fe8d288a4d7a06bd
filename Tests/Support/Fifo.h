#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <string>

#include "OrmelSDK/Platform/FileDescriptor.h"
#include "Support/TemporaryDirectory.h"

namespace ormel::testing {

/// A named pipe by which a test keeps a process waiting that reads it.
class Fifo {
 public:
  Fifo() : path_(directory_.path() / "fifo") {
    ::mkfifo(path_.c_str(), 0600);
    // For reading too, so that opening waits for nobody; the reader then sees an end only after `release`.
    held_ = detail::FileDescriptor(::open(path_.c_str(), O_RDWR | O_CLOEXEC));
  }

  const std::string& path() const noexcept { return path_; }

  /// Lets everyone go who has opened the pipe.
  void release() { held_.close(); }

 private:
  TemporaryDirectory directory_;
  std::string path_;
  detail::FileDescriptor held_;
};

}  // namespace ormel::testing
