#pragma once

#include <memory>

#include "OrmelSDK/AppServerRun/Connection/TerminationNotice.h"
#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Platform/ProcessLauncher.h"

namespace ormel::detail {

/// Starts one process and keeps it beyond the connection that it was started for, so that its end can be waited for.
/// Its owner asking it to terminate only closes its input; `end` does the rest.
///
/// *Thread safety*: as that of the launcher behind it; `end` after the owner of the process has gone.
class KeptProcess final : public ProcessLauncher {
 public:
  explicit KeptProcess(ProcessLauncher& launcher) : launcher_(launcher) {}

  std::unique_ptr<ChildProcess> launch(const LaunchSettings& settings, TerminationHandler onTermination) override;

  bool wasStarted() const noexcept { return wasStarted_; }

  /// Ends the process with its process group: by the end of its input, then by SIGTERM, then by SIGKILL. Ends when that
  /// was noticed, at the latest after some two seconds.
  Task<void> end(Scheduler& scheduler);

 private:
  ProcessLauncher& launcher_;
  std::shared_ptr<ChildProcess> process_;
  bool wasStarted_ = false;
  std::shared_ptr<TerminationNotice> notice_ = std::make_shared<TerminationNotice>();
};

}  // namespace ormel::detail
