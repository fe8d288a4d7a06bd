#pragma once

#include <set>
#include <string>

#include "OrmelSDK/Platform/FileDescriptor.h"

namespace ormel::simulator {

/// Notices what changes in a folder, but not in the folders in it.
class FolderWatch {
 public:
  /// Watches the open folder. Fails with `Error`, as it does where the system cannot tell.
  explicit FolderWatch(const detail::FileDescriptor& folder);

  /// Readable when something has changed.
  int descriptor() const noexcept { return queue_.number(); }

  /// The names of the entries that have changed since this was last asked for; an empty name stands for the folder
  /// itself, also where there was too much to tell. Does not wait.
  std::set<std::string> takeChanges();

 private:
  detail::FileDescriptor queue_;
};

}  // namespace ormel::simulator
