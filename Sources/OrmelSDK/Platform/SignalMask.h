#pragma once

#include <pthread.h>
#include <signal.h>

namespace ormel::detail {

/// All signals save those by which a thread learns of its own faults: a crash handler of the application is to run for
/// them in whatever thread they come.
inline sigset_t asynchronousSignals() noexcept {
  sigset_t signals;
  sigfillset(&signals);
  for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT}) sigdelset(&signals, number);
  return signals;
}

/// The signals that the calling thread blocks.
inline sigset_t currentSignalMask() noexcept {
  sigset_t mask;
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  return mask;
}

/// Takes a SIGPIPE that waits in the calling thread, which blocks it.
inline void discardPendingPipeSignal() noexcept {
  sigset_t pending;
  sigset_t ofPipes;
  int taken = 0;
  sigemptyset(&ofPipes);
  sigaddset(&ofPipes, SIGPIPE);
  if (::sigpending(&pending) == 0 && sigismember(&pending, SIGPIPE) == 1) ::sigwait(&ofPipes, &taken);
}

/// Gives the calling thread, and the threads that it starts meanwhile, a signal mask until this object is destroyed.
class SignalMask {
 public:
  explicit SignalMask(const sigset_t& mask) noexcept { pthread_sigmask(SIG_SETMASK, &mask, &before_); }
  ~SignalMask() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalMask(const SignalMask&) = delete;
  SignalMask& operator=(const SignalMask&) = delete;

 private:
  sigset_t before_;
};

}  // namespace ormel::detail
