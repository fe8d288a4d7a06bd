#include "ormel-simulator/Requests/FolderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "OrmelSDK/Base/Error.h"

namespace ormel::simulator {

namespace {

constexpr mode_t ownerReadsAndWrites = 0600;

// The process may end at any time; the system then gives the lock up.
bool lockWhole(int descriptor) {
  int status = 0;
  do {
    status = ::flock(descriptor, LOCK_EX);
  } while (status != 0 && errno == EINTR);
  return status == 0;
}

}  // namespace

FolderLock::FolderLock(const std::filesystem::path& folder) {
  const std::filesystem::path file = folder / ".lock";
  descriptor_ = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, ownerReadsAndWrites);
  if (descriptor_ >= 0 && lockWhole(descriptor_)) return;
  const std::string reason = std::generic_category().message(errno);
  if (descriptor_ >= 0) ::close(descriptor_);
  throw Error("cannot lock " + file.string() + ": " + reason);
}

FolderLock::~FolderLock() { ::close(descriptor_); }

}  // namespace ormel::simulator
