#pragma once

#include <system_error>
#include <thread>
#include <utility>

#include "OrmelSDK/Platform/FailureInjection.h"

namespace ormel::detail {

/// Runs `body` on a thread of its own. Fails with `std::system_error` when the system has no room for a thread.
template <typename Body>
void startDetachedThread(Body body) {
  if (const int failure = injectedFailure(SystemCall::startThread)) {
    throw std::system_error(failure, std::generic_category());
  }
  std::thread(std::move(body)).detach();
}

}  // namespace ormel::detail
