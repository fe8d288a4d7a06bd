#include "TessellaBrowserMCP/DescriptorIO.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace ormel::detail {

namespace {

bool wouldBlock(ssize_t result) noexcept { return result < 0 && (errno == EAGAIN || errno == EWOULDBLOCK); }

// An interrupted or failed wait needs no handling: the next read or write reports the error.
void waitFor(int descriptor, short events) noexcept {
  pollfd waited{.fd = descriptor, .events = events, .revents = 0};
  ::poll(&waited, 1, -1);
}

}  // namespace

ssize_t readRetrying(int descriptor, char* bytes, std::size_t count) noexcept {
  for (;;) {
    const ssize_t result = ::read(descriptor, bytes, count);
    if (result >= 0 || errno != EINTR) return result;
  }
}

ssize_t writeRetrying(int descriptor, std::string_view bytes) noexcept {
  for (;;) {
    const ssize_t result = ::write(descriptor, bytes.data(), bytes.size());
    if (result >= 0 || errno != EINTR) return result;
  }
}

ssize_t readWaiting(int descriptor, char* bytes, std::size_t count) noexcept {
  for (;;) {
    const ssize_t result = readRetrying(descriptor, bytes, count);
    if (!wouldBlock(result)) return result;
    waitFor(descriptor, POLLIN);
  }
}

bool writeAllWaiting(int descriptor, std::string_view bytes) noexcept {
  while (!bytes.empty()) {
    const ssize_t written = writeRetrying(descriptor, bytes);
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (wouldBlock(written)) {
      waitFor(descriptor, POLLOUT);
    } else {
      return false;
    }
  }
  return true;
}

}  // namespace ormel::detail
