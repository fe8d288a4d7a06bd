#pragma once

#include <string_view>
#include <vector>

namespace ormel::detail {

/// The directories of a `PATH`, split at ":", without empty parts. The views point into `list`.
std::vector<std::string_view> pathListParts(std::string_view list);

}  // namespace ormel::detail
