#pragma once

#include <string_view>

namespace ormel::detail {

/// Ends the process: for the few conditions in which going on would act on a value that does not exist.
[[noreturn]] void fatalError(std::string_view reason) noexcept;

}  // namespace ormel::detail
