#pragma once

#include <string>
#include <utility>

#include "OrmelSDK/Base/Error.h"
#include "OrmelSDK/Base/Export.h"

namespace ormel {

/// A wait ended because the stop token of the waiting task was triggered.
class ORMEL_EXPORT CancelledError : public Error {
 public:
  CancelledError() : Error("The task was cancelled") {}
};

/// A wait ended because the last object that could have completed it was destroyed.
class ORMEL_EXPORT AbandonedError : public Error {
 public:
  AbandonedError() : Error("The operation was abandoned before it completed") {}
};

/// The system had no room for something that the library needs. The operation may be tried again later.
class ORMEL_EXPORT ResourceExhaustedError : public Error {
 public:
  /// `resource` is the thing that was lacking: "threads", "descriptors" or "memory".
  ResourceExhaustedError(std::string resource, const std::string& reason)
      : Error("The system has no room for more " + resource + ": " + reason), resource_(std::move(resource)) {}

  const std::string& resource() const noexcept { return resource_; }

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
};

/// A blocking call was made on a thread of the library, where it could deadlock by waiting for itself.
class ORMEL_EXPORT WouldDeadlockError : public Error {
 public:
  WouldDeadlockError() : Error("A blocking wait on a thread of the library would deadlock; use co_await instead") {}
};

}  // namespace ormel
