#pragma once

#include <signal.h>
#include <sys/utsname.h>
#include <sys/wait.h>

#include <atomic>
#include <cstdio>
#include <thread>

namespace ormel::testing {

/// Has the system reap every child of this process: it ignores SIGCHLD for the length of a test.
class IgnoredChildren {
 public:
  IgnoredChildren() : before_(::signal(SIGCHLD, SIG_IGN)) {}
  ~IgnoredChildren() { ::signal(SIGCHLD, before_); }
  IgnoredChildren(const IgnoredChildren&) = delete;
  IgnoredChildren& operator=(const IgnoredChildren&) = delete;

 private:
  void (*before_)(int);
};

/// Reaps every child of this process on a thread of its own, as fast as it can. All children must have ended before it
/// is destroyed.
class ReapingThread {
 public:
  ReapingThread() = default;
  ReapingThread(const ReapingThread&) = delete;
  ReapingThread& operator=(const ReapingThread&) = delete;
  ~ReapingThread() {
    stopped_ = true;
    thread_.join();
  }

 private:
  void reap() {
    while (!stopped_) {
      if (::waitpid(-1, nullptr, 0) < 0) std::this_thread::yield();
    }
  }

  std::atomic<bool> stopped_ = false;
  std::thread thread_{[this] { reap(); }};
};

/// Whether the system tells how a child ended although somebody else in the process has reaped it.
inline bool endsAreTold() {
#if defined(__linux__)
  utsname system{};
  ::uname(&system);
  int major = 0;
  int minor = 0;
  if (std::sscanf(system.release, "%d.%d", &major, &minor) != 2) return false;
  return major > 6 || (major == 6 && minor >= 15);
#else
  return true;
#endif
}

}  // namespace ormel::testing
