#include "Support/Descriptor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace ormel::testing {

namespace {

[[noreturn]] void failWithErrno(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

bool pollFor(int descriptor, short events, int milliseconds) {
  pollfd waited{.fd = descriptor, .events = events, .revents = 0};
  for (;;) {
    const int ready = ::poll(&waited, 1, milliseconds);
    if (ready >= 0) return ready > 0;
    if (errno != EINTR) failWithErrno("poll");
  }
}

void await(int descriptor, short events) {
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(patience).count();
  if (!pollFor(descriptor, events, static_cast<int>(milliseconds))) throw std::runtime_error("waited in vain");
}

bool mayTryAgain() { return errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK; }

}  // namespace

void Descriptor::reset() noexcept {
  if (number_ >= 0) ::close(std::exchange(number_, -1));
}

Pipe makePipe() {
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) < 0) failWithErrno("pipe");
  Pipe made{Descriptor(ends[0]), Descriptor(ends[1])};
  for (const int end : ends) setCloseOnExec(end);
  return made;
}

std::pair<Descriptor, Descriptor> makeSocketPair(int type) {
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, type, 0, ends.data()) < 0) failWithErrno("socketpair");
  std::pair<Descriptor, Descriptor> made{Descriptor(ends[0]), Descriptor(ends[1])};
  for (const int end : ends) setCloseOnExec(end);
  return made;
}

void setNonBlocking(int descriptor, bool nonBlocking) {
  const int flags = ::fcntl(descriptor, F_GETFL);
  if (::fcntl(descriptor, F_SETFL, nonBlocking ? flags | O_NONBLOCK : flags & ~O_NONBLOCK) < 0) failWithErrno("fcntl");
}

void setCloseOnExec(int descriptor) {
  if (::fcntl(descriptor, F_SETFD, FD_CLOEXEC) < 0) failWithErrno("fcntl");
}

bool isReadable(int descriptor) { return pollFor(descriptor, POLLIN, 0); }

void awaitReadable(int descriptor) { await(descriptor, POLLIN); }

bool readSome(int descriptor, std::string& bytes, std::size_t limit) {
  const std::size_t before = bytes.size();
  bytes.resize(before + limit);
  for (;;) {
    await(descriptor, POLLIN);
    const ssize_t count = ::read(descriptor, bytes.data() + before, limit);
    if (count < 0 && mayTryAgain()) continue;
    bytes.resize(before + static_cast<std::size_t>(count < 0 ? 0 : count));
    if (count < 0) failWithErrno("read");
    return count > 0;
  }
}

std::string readExactly(int descriptor, std::size_t count) {
  std::string bytes;
  bytes.reserve(count);
  while (bytes.size() < count) {
    if (!readSome(descriptor, bytes, count - bytes.size())) throw std::runtime_error("ended too early");
  }
  return bytes;
}

std::string readToEnd(int descriptor) {
  std::string bytes;
  while (readSome(descriptor, bytes)) {
  }
  return bytes;
}

void writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (mayTryAgain()) {
      await(descriptor, POLLOUT);
    } else {
      failWithErrno("write");
    }
  }
}

}  // namespace ormel::testing
