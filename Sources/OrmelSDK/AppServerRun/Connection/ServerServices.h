#pragma once

#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Platform/BlockingWork.h"
#include "OrmelSDK/Platform/ProcessLauncher.h"

namespace ormel::detail {

/// The world that those live in who talk with servers. All of it must outlive them and everything that they have
/// started.
struct ServerServices {
  /// Threads, clock and processes of this machine.
  ServerServices();
  ServerServices(Scheduler& ownScheduler, ProcessLauncher& ownLauncher, BlockingWork& ownBlockingWork)
      : scheduler(&ownScheduler), launcher(&ownLauncher), blockingWork(&ownBlockingWork) {}

  Scheduler* scheduler;
  ProcessLauncher* launcher;
  BlockingWork* blockingWork;
};

}  // namespace ormel::detail
