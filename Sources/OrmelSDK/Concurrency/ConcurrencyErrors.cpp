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

std::string CancelledError::generalAdvice() const {
  return "The application stopped waiting; nothing is wrong. Start the operation again if it is still wanted.";
}

std::string AbandonedError::generalAdvice() const {
  return "The object that would have completed the operation was destroyed first. Keep the conversation, the session "
         "or "
         "the producer of a channel alive for as long as somebody waits for it.";
}

std::string ResourceExhaustedError::generalAdvice() const {
  if (resource_ == "threads") {
    return "Let some handlers end, or raise the limit on threads and processes (ulimit -u, or the container's), and "
           "try "
           "again.";
  }
  if (resource_ == "descriptors") {
    return "Close some files or conversations, or raise the limit on open files (ulimit -n), and try again.";
  }
  return "Free some of it, or raise the limit that this process runs under, and try again.";
}

std::string ForkedProcessError::generalAdvice() const {
  return "Fork before the library is used for the first time, or have the child start another program with exec.";
}

std::string WouldDeadlockError::generalAdvice() const {
  return "In a handler or coroutine that runs on a thread of the library, await the task with co_await; call get, "
         "nextBlocking and the loop over a channel on threads of the application only.";
}

std::string TimeoutError::generalAdvice() const {
  return "It was not done in the time that it was given. Try again, or give it more time.";
}

}  // namespace ormel
