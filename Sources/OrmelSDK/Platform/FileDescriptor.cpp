#include "OrmelSDK/Platform/FileDescriptor.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "OrmelSDK/Platform/FailureInjection.h"
#include "OrmelSDK/Platform/ProcessLaunchError.h"

namespace ormel::detail {

namespace {

constexpr int firstNonStandard = 3;

/// No atomic way exists on macOS; the children of this library are safe there by how they are started.
int makeRawPipe(int (&ends)[2]) {
#if defined(__APPLE__)
  if (::pipe(ends) != 0) return -1;
  for (const int end : ends) ::fcntl(end, F_SETFD, FD_CLOEXEC);
  return 0;
#else
  return ::pipe2(ends, O_CLOEXEC);
#endif
}

void moveAboveStandardStreams(FileDescriptor& descriptor) {
  if (descriptor.number() >= firstNonStandard) return;
  auto moved = FileDescriptor::duplicate(descriptor.number());
  if (!moved.isOpen()) throw ProcessLaunchError("pipe", errno);
  descriptor = std::move(moved);
}

short readiness(int descriptor) noexcept {
  pollfd polled{descriptor, POLLIN, 0};
  while (::poll(&polled, 1, 0) < 0) {
    if (errno != EINTR) return 0;
  }
  return polled.revents;
}

}  // namespace

void FileDescriptor::close() noexcept {
  if (isOpen()) ::close(release());
}

FileDescriptor FileDescriptor::duplicate(int number) noexcept {
  if (const int failure = injectedFailure(SystemCall::duplicate)) {
    errno = failure;
    return FileDescriptor();
  }
  return FileDescriptor(::fcntl(number, F_DUPFD_CLOEXEC, firstNonStandard));
}

Pipe makePipe() {
  if (const int failure = injectedFailure(SystemCall::makePipe)) throw ProcessLaunchError("pipe", failure);
  int ends[2];
  if (makeRawPipe(ends) != 0) throw ProcessLaunchError("pipe", errno);
  Pipe pipe{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
  moveAboveStandardStreams(pipe.readEnd);
  moveAboveStandardStreams(pipe.writeEnd);
  return pipe;
}

bool hasReadableBytes(int descriptor) noexcept { return (readiness(descriptor) & POLLIN) != 0; }

bool isReadable(int descriptor) noexcept { return readiness(descriptor) != 0; }

}  // namespace ormel::detail
