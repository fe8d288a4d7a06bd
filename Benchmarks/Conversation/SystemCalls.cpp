#include "SystemCalls.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include "Support/ChildProgram.h"

#ifdef __linux__
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#endif

namespace ormel::benchmarks {

namespace {

/// The exit status of the counting process where the system refuses it.
constexpr int hiddenStatus = 77;

#ifdef __linux__

/// A child that waits to be watched before it becomes the program.
pid_t startHeld(char* const* command, int gate[2]) {
  if (::pipe(gate) != 0) return -1;
  const pid_t child = ::fork();
  if (child != 0) return child;
  ::close(gate[1]);
  char byte = 0;
  if (::read(gate[0], &byte, 1) != 1) ::_exit(EXIT_FAILURE);
  ::close(gate[0]);
  ::execv(command[0], command);
  ::_exit(EXIT_FAILURE);
}

bool beginsSystemCall(pid_t thread) {
  __ptrace_syscall_info info{};
  return ::ptrace(PTRACE_GET_SYSCALL_INFO, thread, sizeof info, &info) > 0 && info.op == PTRACE_SYSCALL_INFO_ENTRY;
}

struct Watched {
  std::uint64_t calls = 0;
  bool succeeded = false;
};

/// Threads are watched from their birth, as the options say; child processes are not.
Watched watchToTheEnd(pid_t program) {
  constexpr int stopOfSystemCall = SIGTRAP | 0x80;
  Watched watched;
  for (;;) {
    int status = 0;
    const pid_t thread = ::waitpid(-1, &status, __WALL);
    if (thread < 0 && errno == EINTR) continue;
    if (thread < 0) return watched;
    if (!WIFSTOPPED(status)) {
      if (thread == program) watched.succeeded = WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
      continue;
    }
    const bool isEvent = status >> 16 != 0;
    int signal = 0;
    if (WSTOPSIG(status) == stopOfSystemCall) {
      if (beginsSystemCall(thread)) ++watched.calls;
    } else if (!isEvent) {
      signal = WSTOPSIG(status);
    }
    ::ptrace(PTRACE_SYSCALL, thread, 0, signal);
  }
}

int countOnLinux(char* const* command) {
  int gate[2];
  const pid_t program = startHeld(command, gate);
  if (program < 0) return EXIT_FAILURE;
  constexpr unsigned long options =
      PTRACE_O_TRACECLONE | PTRACE_O_TRACEEXEC | PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL;
  if (::ptrace(PTRACE_SEIZE, program, 0, options) != 0) {
    std::fprintf(stderr, "ptrace: %s", std::strerror(errno));
    ::kill(program, SIGKILL);
    ::waitpid(program, nullptr, 0);
    return hiddenStatus;
  }
  ::close(gate[0]);
  if (::write(gate[1], "g", 1) != 1) return EXIT_FAILURE;
  ::close(gate[1]);
  const Watched watched = watchToTheEnd(program);
  if (!watched.succeeded) return EXIT_FAILURE;
  std::printf("%llu\n", static_cast<unsigned long long>(watched.calls));
  return EXIT_SUCCESS;
}

#endif

}  // namespace

int countSystemCallsHere(char* const* command) {
#ifdef __linux__
  return countOnLinux(command);
#else
  static_cast<void>(command);
  std::fprintf(stderr, "this system has no ptrace that tells system calls");
  return hiddenStatus;
#endif
}

double countSystemCallsOf(const std::vector<std::string>& command) {
  testing::ChildOptions options;
  options.arguments = {countingWord};
  options.arguments.insert(options.arguments.end(), command.begin(), command.end());
  testing::ChildProgram counter(command.front(), options);
  const std::string number = counter.readRestOfOutput();
  const testing::ChildEnd end = counter.wait();
  if (end.status == hiddenStatus) throw SystemCallsAreHidden(counter.readErrors());
  if (end.status != EXIT_SUCCESS) {
    throw std::runtime_error("the program whose system calls are counted failed: " + counter.readErrors());
  }
  return std::stod(number);
}

}  // namespace ormel::benchmarks
