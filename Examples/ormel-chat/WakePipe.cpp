#include "WakePipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace ormel::chat {

WakePipe::WakePipe() {
  if (::pipe(ends_) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
  for (const int end : ends_) {
    ::fcntl(end, F_SETFD, FD_CLOEXEC);
    ::fcntl(end, F_SETFL, O_NONBLOCK);
  }
}

WakePipe::~WakePipe() {
  for (const int end : ends_) ::close(end);
}

void WakePipe::wake() const noexcept {
  const int error = errno;
  // A full pipe wakes as well.
  [[maybe_unused]] const auto written = ::write(ends_[1], "!", 1);
  errno = error;
}

void WakePipe::drain() const noexcept {
  char bytes[256];
  while (::read(ends_[0], bytes, sizeof bytes) > 0) continue;
}

}  // namespace ormel::chat
