#pragma once

#include <exception>
#include <memory>
#include <string>

#include "OrmelSDK/Base/FailureCause.h"

namespace ormel::detail {

/// A failure as the consumers of a run are told of it.
struct RunFailure {
  /// One sentence.
  std::string message;
  /// The application asked for it.
  bool aborted = false;
  /// The same call may succeed when it is made again.
  bool retryable = false;
  /// The facts behind it, if they are known.
  std::shared_ptr<const FailureCause> cause = nullptr;
};

/// Whether the failure is a cancellation or `OrmelProcessError::aborted`.
bool isAbortError(const std::exception& error) noexcept;

/// Takes any exception, also one that is no `std::exception`.
RunFailure describedFailure(const std::exception_ptr& error);

}  // namespace ormel::detail
