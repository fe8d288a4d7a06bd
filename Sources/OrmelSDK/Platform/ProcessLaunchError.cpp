#include "OrmelSDK/Platform/ProcessLaunchError.h"

#include <system_error>

namespace ormel::detail {

ProcessLaunchError::ProcessLaunchError(std::string_view subject, int errorNumber)
    : Error(std::string(subject) + ": " + std::generic_category().message(errorNumber)), errorNumber_(errorNumber) {}

}  // namespace ormel::detail
