#include "OrmelSDK/Platform/PipeCapacity.h"

#include <fcntl.h>

namespace ormel::detail {

#ifdef F_SETPIPE_SZ

void growPipe(int descriptor) noexcept {
  // The default limit for unprivileged processes.
  constexpr int capacity = 1 << 20;
  ::fcntl(descriptor, F_SETPIPE_SZ, capacity);
}

#else

void growPipe(int) noexcept {}

#endif

}  // namespace ormel::detail
