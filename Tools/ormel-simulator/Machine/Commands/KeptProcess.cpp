#include "ormel-simulator/Machine/Commands/KeptProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

#include "OrmelSDK/Base/Error.h"
#include "ormel-simulator/Machine/Commands/Keeper.h"
#include "ormel-simulator/Machine/Commands/PseudoTerminal.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

constexpr int signalledBase = 128;
/// For killing, which takes no time unless the system hangs.
constexpr std::chrono::milliseconds longestEnd{5000};

// The system would take it for the end of a text.
void refuseZeroByte(const std::string& text) {
  if (text.find('\0') != std::string::npos) {
    throw Refusal(invalidParams, "an argument and a folder cannot have a zero byte");
  }
}

std::pair<detail::FileDescriptor, detail::FileDescriptor> makeControl() {
  std::array<int, 2> ends;
  if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0) {
    throw Error("no command can be started: " + std::generic_category().message(errno));
  }
  const detail::FileDescriptor first(ends[0]);
  const detail::FileDescriptor second(ends[1]);
  // Copies, to have them close-on-exec and above the standard streams.
  auto control =
      std::pair(detail::FileDescriptor::duplicate(first.number()), detail::FileDescriptor::duplicate(second.number()));
  if (!control.first.isOpen() || !control.second.isOpen()) {
    throw Error("no command can be started: " + std::generic_category().message(errno));
  }
  return control;
}

detail::FileDescriptor openNothing() {
  const detail::FileDescriptor nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  return detail::FileDescriptor::duplicate(nothing.number());
}

void stopBlocking(const detail::FileDescriptor& descriptor) {
  if (descriptor.isOpen()) ::fcntl(descriptor.number(), F_SETFL, O_NONBLOCK);
}

/// A report, if there is one; an end of the socket counts as the end of a keeper that could not tell.
std::optional<KeeperReport> receive(const detail::FileDescriptor& control, int flags) {
  KeeperReport report;
  ssize_t count = 0;
  do {
    count = ::recv(control.number(), &report, sizeof report, flags);
  } while (count < 0 && errno == EINTR);
  if (count == sizeof report) return report;
  if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return std::nullopt;
  return KeeperReport{KeeperReport::Event::ended, -1};
}

}  // namespace

KeptProcess::KeptProcess(const CommandLaunch& launch) {
  refuseZeroByte(launch.folder);
  for (const std::string& argument : launch.arguments) refuseZeroByte(argument);
  auto [control, keeperControl] = makeControl();
  control_ = std::move(control);
  if (launch.terminal) {
    PseudoTerminal terminal = makePseudoTerminal(*launch.terminal);
    input = detail::FileDescriptor::duplicate(terminal.screen.number());
    output = std::move(terminal.screen);
    start(launch, keeperControl, terminal.programs, terminal.programs, terminal.programs);
  } else {
    detail::Pipe inputPipe;
    if (launch.takesInput) {
      inputPipe = detail::makePipe();
    } else {
      inputPipe.readEnd = openNothing();
    }
    detail::Pipe outputPipe = detail::makePipe();
    detail::Pipe errorPipe = detail::makePipe();
    input = std::move(inputPipe.writeEnd);
    output = std::move(outputPipe.readEnd);
    error = std::move(errorPipe.readEnd);
    start(launch, keeperControl, inputPipe.readEnd, outputPipe.writeEnd, errorPipe.writeEnd);
  }
  for (const auto* own : {&input, &output, &error}) stopBlocking(*own);
  keeperControl.close();
  awaitStart(launch);
}

void KeptProcess::start(const CommandLaunch& launch, const detail::FileDescriptor& keeperControl,
                        const detail::FileDescriptor& itsInput, const detail::FileDescriptor& itsOutput,
                        const detail::FileDescriptor& itsError) {
  // The simulator ignores SIGCHLD, so the system reaps the keeper; the socket tells all that is to be known.
  const pid_t keeper = ::fork();
  if (keeper == 0) {
    keepCommand(launch, {keeperControl.number(), itsInput.number(), itsOutput.number(), itsError.number()});
  }
  if (keeper < 0) throw Error("no process can be started: " + std::generic_category().message(errno));
}

void KeptProcess::awaitStart(const CommandLaunch& launch) {
  const KeeperReport report = *receive(control_, 0);
  if (report.event == KeeperReport::Event::started) return;
  const std::string reason = std::generic_category().message(report.detail);
  if (report.event == KeeperReport::Event::noFolder) {
    throw Refusal(invalidRequest, "cannot run in the folder " + launch.folder + ": " + reason);
  }
  if (report.event == KeeperReport::Event::noProgram) {
    throw Refusal(invalidRequest, "cannot run " + launch.arguments.front() + ": " + reason);
  }
  throw Error("cannot run " + launch.arguments.front() + ": its keeper has ended");
}

KeptProcess::~KeptProcess() {
  // The keeper takes it for the end of the simulator.
  ::shutdown(control_.number(), SHUT_WR);
  const auto deadline = std::chrono::steady_clock::now() + longestEnd;
  pollfd entry = {control_.number(), POLLIN, 0};
  std::array<char, sizeof(KeeperReport)> last;
  while (true) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) return;
    if (::poll(&entry, 1, static_cast<int>(left.count())) <= 0) continue;
    if (::recv(control_.number(), last.data(), last.size(), 0) <= 0) return;
  }
}

std::optional<ProcessEnd> KeptProcess::takeEnd() {
  const auto report = receive(control_, MSG_DONTWAIT);
  if (!report) return std::nullopt;
  if (report->detail < 0) return ProcessEnd{};
  if (WIFSIGNALED(report->detail)) return ProcessEnd{signalledBase + WTERMSIG(report->detail)};
  return ProcessEnd{WEXITSTATUS(report->detail)};
}

void KeptProcess::signal(int number) noexcept {
  const auto byte = static_cast<unsigned char>(number);
  [[maybe_unused]] const ssize_t sent = ::send(control_.number(), &byte, 1, 0);
}

}  // namespace ormel::simulator
