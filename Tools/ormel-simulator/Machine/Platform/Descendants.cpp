#include "ormel-simulator/Machine/Platform/Descendants.h"

#if defined(__linux__)
#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#endif

namespace ormel::simulator {

#if defined(__linux__)

void adoptOrphans() noexcept { ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0); }

void dieWith(pid_t parent) noexcept {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
  // It may have ended just before.
  if (::getppid() != parent) ::kill(::getpid(), SIGKILL);
}

std::vector<pid_t> childrenOfThisProcess() {
  std::vector<pid_t> children;
  std::ifstream list("/proc/thread-self/children");
  for (pid_t child = 0; list >> child;) children.push_back(child);
  return children;
}

#else

void adoptOrphans() noexcept {}

void dieWith(pid_t) noexcept {}

std::vector<pid_t> childrenOfThisProcess() { return {}; }

#endif

}  // namespace ormel::simulator
