#pragma once

#include <signal.h>

#include <vector>

namespace ormel::testing {

/// The signals that the calling thread may be interrupted by, but for those that cannot be blocked.
inline std::vector<int> unblockedSignals() {
  sigset_t all;
  sigfillset(&all);
  sigset_t blocked;
  pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
  std::vector<int> unblocked;
  for (int number = 1; number < NSIG; ++number) {
    const bool blockable = number != SIGKILL && number != SIGSTOP && sigismember(&all, number) == 1;
    if (blockable && sigismember(&blocked, number) == 0) unblocked.push_back(number);
  }
  return unblocked;
}

}  // namespace ormel::testing
