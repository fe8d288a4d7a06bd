#include "ormel-simulator/Scenario/Signals.h"

#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <charconv>
#include <csignal>
#include <cstddef>
#include <utility>

namespace ormel::simulator {

namespace {

constexpr std::array<std::pair<std::string_view, int>, 14> namedSignals = {{{"HUP", SIGHUP},
                                                                            {"INT", SIGINT},
                                                                            {"QUIT", SIGQUIT},
                                                                            {"ILL", SIGILL},
                                                                            {"TRAP", SIGTRAP},
                                                                            {"ABRT", SIGABRT},
                                                                            {"BUS", SIGBUS},
                                                                            {"FPE", SIGFPE},
                                                                            {"KILL", SIGKILL},
                                                                            {"SEGV", SIGSEGV},
                                                                            {"PIPE", SIGPIPE},
                                                                            {"ALRM", SIGALRM},
                                                                            {"TERM", SIGTERM},
                                                                            {"USR1", SIGUSR1}}};

constexpr int signalLimit = 65;
std::array<std::atomic<int>, signalLimit> arrivals;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may touch nothing else");

extern "C" void countSignal(int signal) { arrivals[static_cast<std::size_t>(signal)].fetch_add(1); }

void setDisposition(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
}

}  // namespace

std::optional<int> signalNamed(std::string_view name) {
  std::string_view shortName = name;
  if (shortName.starts_with("SIG")) shortName.remove_prefix(3);
  for (const auto& [known, number] : namedSignals) {
    if (shortName == known || name == std::to_string(number)) return number;
  }
  return std::nullopt;
}

std::string signalName(int signal) {
  for (const auto& [known, number] : namedSignals) {
    if (number == signal) return "SIG" + std::string(known);
  }
  return "signal " + std::to_string(signal);
}

void ignoreAndCount(int signal) { setDisposition(signal, countSignal); }

int signalArrivals(int signal) noexcept { return arrivals[static_cast<std::size_t>(signal)].load(); }

void restoreSignals() {
  for (const auto& entry : namedSignals) setDisposition(entry.second, SIG_DFL);
  setDisposition(SIGPIPE, SIG_IGN);
  // A child of the simulator that ends before it leaves no zombie.
  setDisposition(SIGCHLD, SIG_IGN);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

void dieBySignal(int signal) {
  const rlimit noCore = {0, 0};
  setrlimit(RLIMIT_CORE, &noCore);
  setDisposition(signal, SIG_DFL);
  kill(getpid(), signal);
}

}  // namespace ormel::simulator
