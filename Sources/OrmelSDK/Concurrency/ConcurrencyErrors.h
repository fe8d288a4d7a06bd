#pragma once

#include "OrmelSDK/Base/Error.h"

namespace ormel {

/// A wait ended because the stop token of the waiting task was triggered.
class CancelledError : public Error {
 public:
  CancelledError() : Error("The task was cancelled") {}
};

/// A wait ended because the last object that could have completed it was destroyed.
class AbandonedError : public Error {
 public:
  AbandonedError() : Error("The operation was abandoned before it completed") {}
};

/// A blocking call was made on a thread of the library, where it could deadlock by waiting for itself.
class WouldDeadlockError : public Error {
 public:
  WouldDeadlockError() : Error("A blocking wait on a thread of the library would deadlock; use co_await instead") {}
};

}  // namespace ormel
