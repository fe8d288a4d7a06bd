#include "OrmelSDK/Platform/ExitQueue.h"

#if defined(__APPLE__)
#include <errno.h>
#include <sys/event.h>

#include "OrmelSDK/Platform/Pidfd.h"
#endif

namespace ormel::detail {

#if defined(__APPLE__)

FileDescriptor openExitQueue(pid_t pid) noexcept {
  FileDescriptor queue(::kqueue());
  struct kevent wanted;
  EV_SET(&wanted, pid, EVFILT_PROC, EV_ADD | EV_ONESHOT, NOTE_EXIT | NOTE_EXITSTATUS, 0, nullptr);
  if (queue.isOpen() && ::kevent(queue.number(), &wanted, 1, nullptr, 0, nullptr) != 0) queue.close();
  return queue;
}

std::optional<Termination> waitForExit(const FileDescriptor& queue) noexcept {
  if (!queue.isOpen()) return std::nullopt;
  struct kevent told;
  int count = 0;
  do {
    count = ::kevent(queue.number(), nullptr, 0, &told, 1, nullptr);
  } while (count < 0 && errno == EINTR);
  if (count != 1 || (told.flags & EV_ERROR) != 0) return std::nullopt;
  return terminationFromWaitStatus(static_cast<int>(told.data));
}

#else

FileDescriptor openExitQueue(pid_t) noexcept { return FileDescriptor(); }

std::optional<Termination> waitForExit(const FileDescriptor&) noexcept { return std::nullopt; }

#endif

}  // namespace ormel::detail
