#include "StopSignals.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

namespace tessella {

namespace {

volatile std::sig_atomic_t stopPipe = -1;

extern "C" void noteStop(int) {
  const int error = errno;
  // Nothing can be done here if the write fails.
  [[maybe_unused]] const auto written = ::write(stopPipe, "", 1);
  errno = error;
}

}  // namespace

StopSignals::StopSignals() {
  std::array<int, 2> ends;
  if (::pipe(ends.data()) != 0) throw std::system_error(errno, std::generic_category(), "Cannot create a pipe");
  readEnd_ = Descriptor(ends[0]);
  writeEnd_ = Descriptor(ends[1]);
  stopPipe = ends[1];

  struct sigaction action{};
  action.sa_handler = noteStop;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (const int signal : {SIGINT, SIGTERM}) ::sigaction(signal, &action, nullptr);
}

}  // namespace tessella
