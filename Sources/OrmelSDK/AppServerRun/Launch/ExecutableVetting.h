#pragma once

#include <string>

#include "OrmelSDK/Options/OrmelOptions.h"

namespace ormel::detail {

/// Whether there is anything to assess before the server executable may be started.
bool needsVetting(const OrmelOptions& options) noexcept;

/// Fails with `OrmelProcessError` of the kind `spawnFailed` if the program starter would not start exactly the file at
/// `path`, but would read the path as something else and start another program, or none.
void requireExactStart(const std::string& path, const OrmelOptions& options = OrmelOptions());

/// Fails with `OrmelProcessError` of the kind `untrustedExecutable` unless the server executable at `path` may be
/// started, and as `requireExactStart`. The application's own assessment decides if there is one; else an executable
/// that the caller named is the caller's own choice, and any other is assessed by the system's tools, which start only
/// for a path that can be. An assessment that throws rejects.
///
/// *Blocking*: as long as the assessment takes; see `OrmelExecutableTrustPolicy`.
void requireTrustedExecutable(const std::string& path, const OrmelOptions& options);

}  // namespace ormel::detail
