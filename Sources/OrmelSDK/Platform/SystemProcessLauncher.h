#pragma once

#include "OrmelSDK/Platform/ProcessHandle.h"
#include "OrmelSDK/Platform/ProcessLauncher.h"

namespace ormel::detail {

/// Starts real children, served by the threads of `IORuntime`.
class SystemProcessLauncher final : public ProcessLauncher {
 public:
  /// The default launcher.
  static SystemProcessLauncher& shared();

  explicit SystemProcessLauncher(EndNotice notice = EndNotice::automatic) : notice_(notice) {}

  /// Fails with `ProcessLaunchError`.
  std::unique_ptr<ChildProcess> launch(const LaunchSettings& settings, TerminationHandler onTermination) override;

 private:
  EndNotice notice_;
};

}  // namespace ormel::detail
