#pragma once

#include <filesystem>

namespace ormel::simulator {

/// Keeps the other simulators from changing what is in the folder, as long as it lives. Fails with `Error`.
class FolderLock {
 public:
  /// Waits until no other one has it.
  explicit FolderLock(const std::filesystem::path& folder);
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;
  ~FolderLock();

 private:
  int descriptor_;
};

}  // namespace ormel::simulator
