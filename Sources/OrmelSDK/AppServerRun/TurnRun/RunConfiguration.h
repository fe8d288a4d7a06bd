#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Options/OrmelOptions.h"
#include "OrmelSDK/Options/ThreadOptions.h"
#include "OrmelSDK/Platform/BlockingWork.h"
#include "OrmelSDK/Platform/ProcessLauncher.h"

namespace ormel::detail {

/// How long a run waits for an event that may never come. Only tests have others.
struct RunDurations {
  RunDurations() {}

  std::chrono::nanoseconds requestTimeoutNanoseconds = std::chrono::seconds(30);
  std::chrono::nanoseconds interruptCompletionGraceNanoseconds = std::chrono::seconds(3);
  std::chrono::nanoseconds livenessProbeIntervalNanoseconds = std::chrono::seconds(120);
  std::chrono::nanoseconds processExitCoordinationGraceNanoseconds = std::chrono::milliseconds(100);
};

/// The settings of a run, which hold for its life.
struct AppServerTurnRunConfiguration {
  AppServerTurnRunConfiguration() {}

  std::string executablePath;
  /// Put in front of the server's `PATH`.
  std::vector<std::string> ormelPathDirectories;
  OrmelOptions ormelOptions;
  ThreadOptions threadOptions;
  RunDurations durations;
};

/// The world that a run lives in. All of it must outlive the run and everything that the run has started.
struct RunServices {
  /// Threads, clock and processes of this machine.
  RunServices();
  RunServices(Scheduler& schedulerOfRun, ProcessLauncher& launcherOfRun, BlockingWork& blockingWorkOfRun)
      : scheduler(&schedulerOfRun), launcher(&launcherOfRun), blockingWork(&blockingWorkOfRun) {}

  Scheduler* scheduler;
  ProcessLauncher* launcher;
  BlockingWork* blockingWork;
};

}  // namespace ormel::detail
