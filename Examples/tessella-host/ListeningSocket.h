#pragma once

#include <sys/types.h>

#include <filesystem>

#include "Descriptor.h"

namespace tessella {

/// A Unix-domain socket that only this user can connect to. Its file goes away with it.
class ListeningSocket {
 public:
  /// Creates the socket at `path`, and its directory if there is none yet. The file of a host that died is replaced;
  /// anything else that stands there is left alone. Fails with `std::runtime_error` or `std::system_error`.
  ///
  /// Changes the process's file creation mask for a moment, so no other thread should be running.
  explicit ListeningSocket(std::filesystem::path path);
  ListeningSocket(const ListeningSocket&) = delete;
  ListeningSocket& operator=(const ListeningSocket&) = delete;
  ~ListeningSocket();

  int descriptor() const noexcept { return descriptor_.get(); }

 private:
  std::filesystem::path path_;
  Descriptor descriptor_;
  dev_t device_ = 0;
  ino_t inode_ = 0;
};

}  // namespace tessella
