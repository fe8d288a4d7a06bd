#include "ormel-simulator/Machine/Commands/Keeper.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <initializer_list>
#include <vector>

#include "OrmelSDK/Platform/FileDescriptor.h"
#include "ormel-simulator/Machine/Platform/Descendants.h"

extern char** environ;  // NOLINT(readability-redundant-declaration): only some systems' headers declare it

namespace ormel::simulator {

namespace {

constexpr int statusWithoutProgram = 127;

// A signal handler can be told by nothing else.
volatile int childEndNotice = -1;

extern "C" void noticeChildEnd(int) {
  const int error = errno;
  [[maybe_unused]] const ssize_t written = ::write(childEndNotice, "", 1);
  errno = error;
}

void onSignal(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  ::sigaction(signal, &action, nullptr);
}

/// All descriptors but those of the keeper: the command must not hold the simulator's streams open.
void closeOthers(const KeeperDescriptors& descriptors) {
  std::vector<int> others;
  if (DIR* list = ::opendir("/dev/fd")) {
    while (const dirent* entry = ::readdir(list)) {
      const int number = std::atoi(entry->d_name);
      const bool isOwn = number == descriptors.control || number == descriptors.input || number == descriptors.output ||
                         number == descriptors.error;
      if (number > STDERR_FILENO && number != ::dirfd(list) && !isOwn) others.push_back(number);
    }
    ::closedir(list);
  }
  for (const int number : others) ::close(number);
  const int nothing = ::open("/dev/null", O_RDWR);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(nothing, stream);
  if (nothing > STDERR_FILENO) ::close(nothing);
}

/// As the system takes texts; they stay those of the list.
std::vector<char*> endedByNull(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

/// Becomes the command, or writes a report of why it cannot to `failure`.
[[noreturn]] void becomeCommand(const CommandLaunch& launch, const KeeperDescriptors& descriptors, pid_t keeper,
                                int failure) {
  if (launch.terminal) {
    ::setsid();
    ::ioctl(descriptors.input, TIOCSCTTY, 0);
  } else {
    ::setpgid(0, 0);
  }
  dieWith(keeper);
  ::dup2(descriptors.input, STDIN_FILENO);
  ::dup2(descriptors.output, STDOUT_FILENO);
  ::dup2(descriptors.error, STDERR_FILENO);
  for (int signal = 1; signal < NSIG; ++signal) onSignal(signal, SIG_DFL);
  const std::vector<char*> arguments = endedByNull(launch.arguments);
  std::vector<char*> variables = endedByNull(launch.environment);
  KeeperReport report = {KeeperReport::Event::noFolder, 0};
  if (launch.folder.empty() || ::chdir(launch.folder.c_str()) == 0) {
    report.event = KeeperReport::Event::noProgram;
    environ = variables.data();
    ::execvp(arguments.front(), arguments.data());
  }
  report.detail = errno;
  [[maybe_unused]] const ssize_t written = ::write(failure, &report, sizeof report);
  ::_exit(statusWithoutProgram);
}

/// A command as its keeper sees it.
class KeptCommand {
 public:
  KeptCommand(const CommandLaunch& launch, const KeeperDescriptors& descriptors)
      : control_(descriptors.control), notice_(detail::makePipe()) {
    childEndNotice = notice_.writeEnd.number();
    ::fcntl(childEndNotice, F_SETFL, O_NONBLOCK);
    ::fcntl(notice_.readEnd.number(), F_SETFL, O_NONBLOCK);
    onSignal(SIGCHLD, noticeChildEnd);
    start(launch, descriptors);
  }

  /// Until the command or the simulator has ended.
  void keep() {
    std::array<pollfd, 2> entries = {{{control_, POLLIN, 0}, {notice_.readEnd.number(), POLLIN, 0}}};
    while (!reapOrphans()) {
      const bool isReady = ::poll(entries.data(), entries.size(), -1) > 0;
      if (isReady && entries[0].revents != 0 && !passSignalOn()) break;
      std::array<char, 64> notices;
      while (::read(notice_.readEnd.number(), notices.data(), notices.size()) > 0) continue;
    }
    endAll();
  }

  void report(const KeeperReport& report) const {
    // It is so little that it goes out as a whole, or not at all.
    [[maybe_unused]] const ssize_t sent = ::send(control_, &report, sizeof report, 0);
  }

  int status() const noexcept { return status_; }

 private:
  void start(const CommandLaunch& launch, const KeeperDescriptors& descriptors) {
    detail::Pipe failure = detail::makePipe();
    const pid_t keeper = ::getpid();
    command_ = ::fork();
    if (command_ == 0) becomeCommand(launch, descriptors, keeper, failure.writeEnd.number());
    KeeperReport first = {KeeperReport::Event::started, 0};
    if (command_ < 0) first = {KeeperReport::Event::noProgram, errno};
    failure.writeEnd.close();
    // The end comes when the command has become its program.
    while (::read(failure.readEnd.number(), &first, sizeof first) < 0 && errno == EINTR) continue;
    for (const int stream : {descriptors.input, descriptors.output, descriptors.error}) ::close(stream);
    report(first);
    if (first.event != KeeperReport::Event::started) ::_exit(0);
  }

  /// False if the simulator is gone.
  bool passSignalOn() const {
    unsigned char signal = 0;
    const ssize_t count = ::recv(control_, &signal, 1, 0);
    if (count > 0) ::kill(-command_, signal);
    return count > 0 || (count < 0 && errno == EINTR);
  }

  /// Whether the command has ended. It is not reaped then, so that its number still stands for nothing else.
  bool reapOrphans() const {
    while (true) {
      siginfo_t ended{};
      if (::waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT) != 0 || ended.si_pid == 0) return false;
      if (ended.si_pid == command_) return true;
      ::waitpid(ended.si_pid, nullptr, 0);
    }
  }

  /// Kills the command and all that comes from it, and reaps them. Those whose parent is killed turn up as children.
  void endAll() {
    ::kill(-command_, SIGKILL);
    while (true) {
      const std::vector<pid_t> children = childrenOfThisProcess();
      for (const pid_t child : children) ::kill(child, SIGKILL);
      int status = 0;
      // No waiting for one that is not known and so has not been killed.
      const pid_t ended = ::waitpid(children.empty() ? command_ : -1, &status, 0);
      if (ended < 0 && errno != EINTR) return;
      if (ended == command_) status_ = status;
    }
  }

  int control_;
  detail::Pipe notice_;
  pid_t command_ = -1;
  int status_ = 0;
};

void run(const CommandLaunch& launch, const KeeperDescriptors& descriptors) {
  // A terminal's signals to the simulator are not for the keeper, which has to outlive it.
  ::setpgid(0, 0);
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE}) onSignal(signal, SIG_IGN);
  closeOthers(descriptors);
  adoptOrphans();
  KeptCommand command(launch, descriptors);
  command.keep();
  command.report({KeeperReport::Event::ended, command.status()});
}

}  // namespace

void keepCommand(const CommandLaunch& launch, const KeeperDescriptors& descriptors) noexcept {
  try {
    run(launch, descriptors);
  } catch (...) {
    // The simulator learns of it from the end of the socket.
    ::_exit(1);
  }
  ::_exit(0);
}

}  // namespace ormel::simulator
