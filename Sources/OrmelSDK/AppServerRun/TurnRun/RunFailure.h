#pragma once

#include <exception>
#include <string>

namespace ormel::detail {

/// What a run tells its consumers of a failure.
struct RunFailure {
  /// One sentence.
  std::string message;
  /// The application wanted it.
  bool aborted = false;
};

/// Whether the failure is a cancellation or `OrmelProcessError::aborted`.
bool isAbortError(const std::exception& error) noexcept;

/// Takes any exception, also one that is no `std::exception`.
RunFailure describedFailure(const std::exception_ptr& error);

}  // namespace ormel::detail
