#pragma once

#include <string>
#include <string_view>

namespace ormel::detail {

/// UTF-8 text with each character replaced by its lower-case form in Unicode's sense; bytes that are not UTF-8 stay.
std::string lowercased(std::string_view text);

}  // namespace ormel::detail
