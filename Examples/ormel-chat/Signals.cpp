#include "Signals.h"

#include <atomic>
#include <csignal>

namespace ormel::chat {

namespace {

std::atomic<int> interrupts{0};
std::atomic<int> terminationSignal{0};
std::atomic<const WakePipe*> woken{nullptr};

// All that the handler touches is free of locks.
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<const WakePipe*>::is_always_lock_free);

constexpr int handledSignals[] = {SIGINT, SIGTERM, SIGHUP};

extern "C" void noteSignal(int signal) {
  if (signal == SIGINT) {
    interrupts.fetch_add(1);
  } else {
    terminationSignal.store(signal);
  }
  if (const auto* pipe = woken.load()) pipe->wake();
}

void handleAll(void (*handler)(int)) {
  struct sigaction action{};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  for (const int signal : handledSignals) ::sigaction(signal, &action, nullptr);
}

}  // namespace

Signals::Signals(const WakePipe& wakePipe) {
  woken.store(&wakePipe);
  handleAll(noteSignal);
}

Signals::~Signals() {
  handleAll(SIG_DFL);
  woken.store(nullptr);
}

int Signals::takeInterrupts() const noexcept { return interrupts.exchange(0); }

int Signals::termination() const noexcept { return terminationSignal.load(); }

}  // namespace ormel::chat
