#include "Signals.h"

#include <atomic>
#include <csignal>

namespace ormel::chat {

namespace {

std::atomic<int> interrupts{0};
std::atomic<bool> suspension{false};
std::atomic<int> terminationSignal{0};
std::atomic<const WakePipe*> woken{nullptr};

// All that the handler touches is free of locks.
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free &&
              std::atomic<const WakePipe*>::is_always_lock_free);

constexpr int handledSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

extern "C" void noteSignal(int signal) {
  if (signal == SIGINT) {
    interrupts.fetch_add(1);
  } else if (signal == SIGTSTP) {
    suspension.store(true);
  } else {
    terminationSignal.store(signal);
  }
  if (const auto* pipe = woken.load()) pipe->wake();
}

bool isIgnored(int signal) {
  struct sigaction action{};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void handle(int signal, void (*handler)(int)) {
  struct sigaction action{};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  ::sigaction(signal, &action, nullptr);
}

void handleAll(void (*handler)(int)) {
  for (const int signal : handledSignals) handle(signal, handler);
}

}  // namespace

Signals::Signals(const WakePipe& wakePipe, bool takesSuspensions) {
  woken.store(&wakePipe);
  handleAll(noteSignal);
  // Where there is no job control it is ignored: nobody could wake the program.
  if (takesSuspensions && !isIgnored(SIGTSTP)) handle(SIGTSTP, noteSignal);
}

Signals::~Signals() {
  handleAll(SIG_DFL);
  if (!isIgnored(SIGTSTP)) handle(SIGTSTP, SIG_DFL);
  woken.store(nullptr);
}

int Signals::takeInterrupts() const noexcept { return interrupts.exchange(0); }

bool Signals::takeSuspension() const noexcept { return suspension.exchange(false); }

int Signals::termination() const noexcept { return terminationSignal.load(); }

}  // namespace ormel::chat
