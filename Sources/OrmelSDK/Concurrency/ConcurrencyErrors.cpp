#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"

#include <cstdint>
#include <string>

namespace ormel {

namespace {

/// Seconds with as many decimal places as it takes, up to nanoseconds.
std::string inSeconds(std::chrono::nanoseconds duration) {
  const std::int64_t count = duration.count() < 0 ? 0 : duration.count();
  std::string text = std::to_string(count / 1'000'000'000);
  std::string fraction = std::to_string(1'000'000'000 + count % 1'000'000'000);
  fraction.erase(fraction.find_last_not_of('0') + 1);
  if (fraction.size() > 1) text += fraction.replace(0, 1, ".");
  return text + (text == "1" ? " second" : " seconds");
}

}  // namespace

TimeoutError::TimeoutError(std::chrono::nanoseconds duration)
    : Error("Timed out after " + inSeconds(duration)), duration_(duration) {}

}  // namespace ormel
