#pragma once

#include <string_view>

namespace ormel::detail {

/// Ends the process; for the few conditions under which there is no valid value to continue with.
[[noreturn]] void fatalError(std::string_view reason) noexcept;

}  // namespace ormel::detail
