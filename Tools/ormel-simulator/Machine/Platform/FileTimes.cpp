#include "ormel-simulator/Machine/Platform/FileTimes.h"

#include <fcntl.h>

#include <algorithm>

namespace ormel::simulator {

namespace {

constexpr double millisecondsOfSecond = 1e3;
constexpr double nanosecondsOfMillisecond = 1e6;

template <typename Time>
double millisecondsOf(const Time& time) noexcept {
  return static_cast<double>(time.tv_sec) * millisecondsOfSecond +
         static_cast<double>(time.tv_nsec) / nanosecondsOfMillisecond;
}

}  // namespace

#if defined(__APPLE__)

double modificationMilliseconds(const struct stat& found) noexcept { return millisecondsOf(found.st_mtimespec); }

double creationMilliseconds(int, const std::string&, const struct stat& found) noexcept {
  return millisecondsOf(found.st_birthtimespec);
}

#else

double modificationMilliseconds(const struct stat& found) noexcept { return millisecondsOf(found.st_mtim); }

double creationMilliseconds(int folder, const std::string& name, const struct stat& found) noexcept {
  struct statx extended{};
  const bool isRead = ::statx(folder, name.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BTIME, &extended) == 0;
  if (isRead && (extended.stx_mask & STATX_BTIME) != 0) return millisecondsOf(extended.stx_btime);
  return std::min(millisecondsOf(found.st_mtim), millisecondsOf(found.st_ctim));
}

#endif

}  // namespace ormel::simulator
