#pragma once

#include <chrono>
#include <string>
#include <utility>

#include "OrmelSDK/Base/Error.h"

namespace ormel {

/// A wait ended because the stop token of the waiting task was triggered.
class CancelledError : public Error {
 public:
  CancelledError() : Error("The task was cancelled") {}

  bool isAborted() const noexcept override { return true; }
};

/// Something took longer than it was given. `what()` has the time in seconds: "Timed out after 2.5 seconds".
class TimeoutError : public Error {
 public:
  explicit TimeoutError(std::chrono::nanoseconds duration);

  /// The time that was given.
  std::chrono::nanoseconds duration() const noexcept { return duration_; }

  bool isRetryable() const noexcept override { return true; }

 private:
  std::chrono::nanoseconds duration_;
};

/// A wait ended because the last object that could have completed it was destroyed.
class AbandonedError : public Error {
 public:
  AbandonedError() : Error("The operation was abandoned before it completed") {}
};

/// The system had no room for something that the library needs. The operation may be tried again later.
class ResourceExhaustedError : public Error {
 public:
  /// `resource` is the thing that was lacking: "threads", "descriptors" or "memory".
  ResourceExhaustedError(std::string resource, const std::string& reason)
      : Error("The system has no room for more " + resource + ": " + reason), resource_(std::move(resource)) {}

  const std::string& resource() const noexcept { return resource_; }

  bool isRetryable() const noexcept override { return true; }

 private:
  std::string resource_;
};

/// The library was used in a forked child of a process that had used it: its threads and servers belong to the parent.
class ForkedProcessError : public Error {
 public:
  ForkedProcessError()
      : Error(
            "This process was forked from one that had used the library, whose threads stayed there; use the library "
            "in one of the two only, or have the child call exec") {}
};

/// A blocking call was made on a thread of the library, where it could deadlock by waiting for itself.
class WouldDeadlockError : public Error {
 public:
  WouldDeadlockError() : Error("A blocking wait on a thread of the library would deadlock; use co_await instead") {}
};

}  // namespace ormel
