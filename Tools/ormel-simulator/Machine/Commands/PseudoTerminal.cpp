#include "ormel-simulator/Machine/Commands/PseudoTerminal.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <system_error>

#include "OrmelSDK/Base/Error.h"

namespace ormel::simulator {

namespace {

detail::FileDescriptor closeOnExec(detail::FileDescriptor descriptor) {
  ::fcntl(descriptor.number(), F_SETFD, FD_CLOEXEC);
  return descriptor;
}

}  // namespace

PseudoTerminal makePseudoTerminal(const TerminalSize& size) {
  PseudoTerminal terminal;
  terminal.screen = closeOnExec(detail::FileDescriptor(::posix_openpt(O_RDWR | O_NOCTTY)));
  const int screen = terminal.screen.number();
  if (terminal.screen.isOpen() && ::grantpt(screen) == 0 && ::unlockpt(screen) == 0) {
    terminal.programs = detail::FileDescriptor(::open(::ptsname(screen), O_RDWR | O_NOCTTY | O_CLOEXEC));
  }
  if (!terminal.programs.isOpen()) throw Error("there is no terminal: " + std::generic_category().message(errno));
  resizeTerminal(terminal.screen, size);
  return terminal;
}

void resizeTerminal(const detail::FileDescriptor& screen, const TerminalSize& size) noexcept {
  winsize room = {};
  room.ws_row = size.rows;
  room.ws_col = size.columns;
  ::ioctl(screen.number(), TIOCSWINSZ, &room);
}

}  // namespace ormel::simulator
