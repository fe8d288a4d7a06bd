#pragma once

#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Options/OrmelOptions.h"
#include "OrmelSDK/Options/ThreadOptions.h"
#include "OrmelSDK/Thread.h"

namespace ormel {

/// The front door of the library: it finds the server executable once and makes what an application works with.
///
///     Ormel ormel;
///     Thread thread = ormel.startThread();
///
/// *Thread safety*: immutable; may be used from any threads.
///
/// *Object lifetimes*: what it makes does not need it any more. Copies are independent.
///
/// *Errors*: construction does not fail. That there is no executable shows when a process is to be started.
class Ormel {
 public:
  /// Looks for the executable; `OrmelOptions` says where.
  explicit Ormel(OrmelOptions options = OrmelOptions());

  /// The server executable that is used, or the bare name "ormel" if none was found.
  const std::string& executablePath() const noexcept { return executablePath_; }

  /// Directories that are put ahead of the server's `PATH`.
  const std::vector<std::string>& ormelPathDirectories() const noexcept { return ormelPathDirectories_; }

  /// Those given, with `selectedOrmelPathOverride` telling what the search came to.
  const OrmelOptions& options() const noexcept { return options_; }

  /// The executable that a path leads to, which may be that of a script: the one that the constructor would use.
  static std::string normalizedCLIPath(const std::string& path);

  /// A new conversation. Nothing is sent before its first turn.
  Thread startThread(ThreadOptions options = ThreadOptions()) const;

  /// A conversation that the server knows. Nothing is sent before its first operation.
  Thread resumeThread(std::string id, ThreadOptions options = ThreadOptions()) const;

 private:
  Thread thread(std::optional<std::string> id, ThreadOptions options) const;

  OrmelOptions options_;
  std::string executablePath_;
  std::vector<std::string> ormelPathDirectories_;
};

}  // namespace ormel
