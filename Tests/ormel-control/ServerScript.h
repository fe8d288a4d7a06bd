#pragma once

#include <signal.h>
#include <sys/stat.h>

#include <cerrno>
#include <fstream>
#include <string>

#include "Support/Eventually.h"
#include "Support/SimulatorScenario.h"
#include "Support/TemporaryDirectory.h"

namespace ormel::control {

/// A server that leaves its process id, and is the simulator otherwise.
class ServerScript {
 public:
  ServerScript() {
    std::ofstream(path()) << "#!/bin/sh\necho $$ > " << folder_ / "pid" << "\nexec "
                          << testing::SimulatorScenario::executable() << " \"$@\"\n";
    ::chmod(path().c_str(), 0700);
  }

  std::string path() const { return folder_ / "server"; }

  /// Whether there was a process, which has gone.
  bool hasEnded() const {
    pid_t id = 0;
    std::ifstream(folder_ / "pid") >> id;
    return id > 0 && testing::eventually([&] { return ::kill(id, 0) != 0 && errno == ESRCH; });
  }

 private:
  testing::TemporaryDirectory folder_;
};

}  // namespace ormel::control
