#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "OrmelSDK/Options/OrmelOptions.h"
#include "OrmelSDK/Options/ThreadOptions.h"

namespace ormel::detail {

/// How long a run waits for an event that may never come. Only tests have others.
struct RunDurations {
  RunDurations() {}

  std::chrono::nanoseconds requestTimeoutNanoseconds = std::chrono::seconds(30);
  std::chrono::nanoseconds interruptCompletionGraceNanoseconds = std::chrono::seconds(3);
  std::chrono::nanoseconds livenessProbeIntervalNanoseconds = std::chrono::seconds(120);
  std::chrono::nanoseconds processExitCoordinationGraceNanoseconds = std::chrono::milliseconds(100);
  /// The time that a process has to end by itself when its run is closed.
  std::chrono::nanoseconds processEndGraceNanoseconds = std::chrono::seconds(3);
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

}  // namespace ormel::detail
