#pragma once

#include <chrono>
#include <exception>
#include <string>
#include <utility>

#include "OrmelSDK/Base/Error.h"
#include "OrmelSDK/Base/Export.h"

namespace ormel {

/// A wait ended because the stop token of the waiting task was triggered.
class ORMEL_EXPORT CancelledError : public Error {
 public:
  CancelledError() : Error("The task was cancelled") {}

  bool isAborted() const noexcept override { return true; }

 protected:
  std::string generalAdvice() const override;
};

/// Something took longer than it was given. `what()` has the time in seconds: "Timed out after 2.5 seconds".
class ORMEL_EXPORT TimeoutError : public Error {
 public:
  explicit TimeoutError(std::chrono::nanoseconds duration);

  /// The time that was given.
  std::chrono::nanoseconds duration() const noexcept { return duration_; }

  bool isRetryable() const noexcept override { return true; }

 protected:
  std::string generalAdvice() const override;

 private:
  std::chrono::nanoseconds duration_;
};

/// A wait ended because the last object that could have completed it was destroyed.
class ORMEL_EXPORT AbandonedError : public Error {
 public:
  AbandonedError() : Error("The operation was abandoned before it completed") {}

 protected:
  std::string generalAdvice() const override;
};

/// The system had no room for something that the library needs. The operation may be tried again later.
class ORMEL_EXPORT ResourceExhaustedError : public Error {
 public:
  /// `resource` is the thing that was lacking: "threads", "descriptors" or "memory".
  ResourceExhaustedError(std::string resource, const std::string& reason)
      : Error("The system has no room for more " + resource + ": " + reason), resource_(std::move(resource)) {}

  const std::string& resource() const noexcept { return resource_; }

  bool isRetryable() const noexcept override { return true; }

 protected:
  std::string generalAdvice() const override;

 private:
  std::string resource_;
};

/// The library was used in a forked child of a process that had used it: its threads and servers belong to the parent.
class ORMEL_EXPORT ForkedProcessError : public Error {
 public:
  ForkedProcessError()
      : Error(
            "This process was forked from one that had used the library, whose threads stayed there; use the library "
            "in one of the two only, or have the child call exec") {}

 protected:
  std::string generalAdvice() const override;
};

/// A blocking call was made on a thread of the library, where it could deadlock by waiting for itself.
class ORMEL_EXPORT WouldDeadlockError : public Error {
 public:
  WouldDeadlockError() : Error("A blocking wait on a thread of the library would deadlock; use co_await instead") {}

 protected:
  std::string generalAdvice() const override;
};

namespace detail {

/// The error, or where there is no memory for it that failure: for those who must not throw.
template <typename E>
std::exception_ptr errorOrWantOfMemory() noexcept {
  try {
    return std::make_exception_ptr(E());
  } catch (...) {
    return std::current_exception();
  }
}

}  // namespace detail

}  // namespace ormel
