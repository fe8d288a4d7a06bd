#include "ormel-simulator/Machine/Platform/FolderWatch.h"

#if defined(__linux__)
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <system_error>
#endif

#include "OrmelSDK/Base/Error.h"

namespace ormel::simulator {

#if defined(__linux__)

namespace {

constexpr std::uint32_t changes = IN_CREATE | IN_DELETE | IN_MODIFY | IN_ATTRIB | IN_MOVED_FROM | IN_MOVED_TO |
                                  IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
constexpr std::size_t eventRoom = 65536;

}  // namespace

FolderWatch::FolderWatch(const detail::FileDescriptor& folder) : queue_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
  // By the open folder, so that a link which takes its place has no effect.
  const std::string path = "/proc/self/fd/" + std::to_string(folder.number());
  if (queue_.isOpen() && ::inotify_add_watch(queue_.number(), path.c_str(), changes) >= 0) return;
  throw Error("files cannot be watched: " + std::generic_category().message(errno));
}

std::set<std::string> FolderWatch::takeChanges() {
  std::set<std::string> names;
  alignas(inotify_event) std::array<char, eventRoom> events;
  while (true) {
    const ssize_t size = ::read(queue_.number(), events.data(), events.size());
    if (size <= 0) return names;
    std::size_t offset = 0;
    while (offset < static_cast<std::size_t>(size)) {
      inotify_event event;
      std::memcpy(&event, &events.at(offset), sizeof event);
      const char* name = events.data() + offset + sizeof event;
      if ((event.mask & IN_IGNORED) == 0) names.insert(event.len > 0 ? name : "");
      offset += sizeof event + event.len;
    }
  }
}

#else

FolderWatch::FolderWatch(const detail::FileDescriptor&) {
  throw Error("files cannot be watched: the simulator knows no way to on this system");
}

std::set<std::string> FolderWatch::takeChanges() { return {}; }

#endif

}  // namespace ormel::simulator
