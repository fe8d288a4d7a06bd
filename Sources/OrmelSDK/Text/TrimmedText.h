#pragma once

#include <string_view>

namespace ormel::detail {

/// `text` without the white space and line ends, in Unicode's sense, at both of its ends.
std::string_view trimmed(std::string_view text) noexcept;

}  // namespace ormel::detail
