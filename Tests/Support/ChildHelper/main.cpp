// A child process that misbehaves on demand. Its first argument says how.

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

constexpr int enoughDescriptors = 1024;

[[noreturn]] void hang() {
  for (;;) ::pause();
}

void writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto count = ::write(descriptor, bytes.data(), bytes.size());
    if (count <= 0) std::exit(99);
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

/// Prints the numbers of all open descriptors.
int listDescriptors() {
  std::string text;
  for (int descriptor = 0; descriptor < enoughDescriptors; ++descriptor) {
    if (::fcntl(descriptor, F_GETFD) >= 0) text += std::to_string(descriptor) + " ";
  }
  writeAll(STDOUT_FILENO, text);
  return 0;
}

/// Prints the signals that are blocked or have another disposition than the default.
int listUnusualSignals() {
  sigset_t blocked;
  ::sigprocmask(SIG_SETMASK, nullptr, &blocked);
  std::string text = "unusual:";
  for (int number = 1; number < NSIG; ++number) {
    struct sigaction action{};
    const bool known = ::sigaction(number, nullptr, &action) == 0;
    if (known && action.sa_handler != SIG_DFL) text += " handled " + std::to_string(number);
    if (sigismember(&blocked, number) == 1) text += " blocked " + std::to_string(number);
  }
  writeAll(STDOUT_FILENO, text);
  return 0;
}

/// Writes as many bytes to each of the two output streams, by turns.
int flood(const char* count) {
  const std::string block(4096, 'x');
  for (long left = std::atol(count); left > 0; left -= static_cast<long>(block.size())) {
    writeAll(STDOUT_FILENO, block);
    writeAll(STDERR_FILENO, block);
  }
  return 0;
}

[[noreturn]] void closeOutputAndHang() {
  ::close(STDOUT_FILENO);
  ::close(STDERR_FILENO);
  hang();
}

[[noreturn]] void ignoreTerminationAndHang() {
  ::signal(SIGTERM, SIG_IGN);
  writeAll(STDOUT_FILENO, "ready");
  hang();
}

int notes = -1;

void noteTerminationAndEnd(int) {
  [[maybe_unused]] const auto written = ::write(notes, " terminated", std::string_view(" terminated").size());
  ::_exit(0);
}

/// Notes in a file that it is ready, and then that it was asked to end.
[[noreturn]] void noteTermination(const char* file) {
  notes = ::open(file, O_WRONLY | O_APPEND | O_CLOEXEC);
  ::signal(SIGTERM, noteTerminationAndEnd);
  writeAll(notes, "ready");
  hang();
}

/// Leaves a process behind that holds the standard streams until nobody writes to the named fifo any more.
int leaveGrandchild(const char* fifo, const char* status) {
  const int held = ::open(fifo, O_RDONLY);
  if (::fork() == 0) {
    char byte = 0;
    while (::read(held, &byte, 1) > 0) {
    }
    return 0;
  }
  writeAll(STDOUT_FILENO, "left");
  return std::atoi(status);
}

/// Fills the pipe with bytes and is then killed.
int writeAndDie(const char* count) {
  writeAll(STDOUT_FILENO, std::string(static_cast<std::size_t>(std::atol(count)), 'x'));
  ::raise(SIGKILL);
  return 0;
}

/// Closes its input, says so, and lives until its output has no reader any more.
int closeInput() {
  ::close(STDIN_FILENO);
  for (;;) {
    writeAll(STDOUT_FILENO, "closed");
    ::pause();
  }
}

}  // namespace

int main(int count, char** arguments) {
  const std::string_view what = count > 1 ? arguments[1] : "";
  if (what == "descriptors") return listDescriptors();
  if (what == "signals") return listUnusualSignals();
  if (what == "flood") return flood(arguments[2]);
  if (what == "close-output") closeOutputAndHang();
  if (what == "ignore-termination") ignoreTerminationAndHang();
  if (what == "note-termination") noteTermination(arguments[2]);
  if (what == "leave-grandchild") return leaveGrandchild(arguments[2], arguments[3]);
  if (what == "write-and-die") return writeAndDie(arguments[2]);
  if (what == "close-input") return closeInput();
  if (what == "hang") hang();
  return 98;
}
