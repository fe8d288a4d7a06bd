#include "OrmelSDK/Base/FatalError.h"

#include <cstdio>
#include <cstdlib>

namespace ormel::detail {

void fatalError(std::string_view reason) noexcept {
  std::fprintf(stderr, "Fatal error: %.*s\n", static_cast<int>(reason.size()), reason.data());
  std::abort();
}

}  // namespace ormel::detail
