#pragma once

#include <string>
#include <string_view>

#include "OrmelSDK/Base/Error.h"

namespace ormel::detail {

/// A child process could not be started: `subject`, a colon, and the system's text for `errorNumber`.
class ProcessLaunchError : public Error {
 public:
  ProcessLaunchError(std::string_view subject, int errorNumber);

  /// The value of `errno` that the system gave.
  int errorNumber() const noexcept { return errorNumber_; }

 private:
  int errorNumber_;
};

}  // namespace ormel::detail
