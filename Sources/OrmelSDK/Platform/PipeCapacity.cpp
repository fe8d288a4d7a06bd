#include "OrmelSDK/Platform/PipeCapacity.h"

#include <fcntl.h>

namespace ormel::detail {

#ifdef F_SETPIPE_SZ

void growPipe(int descriptor) noexcept {
  // The most that a process without privileges may ask for, unless its system was set up otherwise.
  constexpr int capacity = 1 << 20;
  ::fcntl(descriptor, F_SETPIPE_SZ, capacity);
}

#else

void growPipe(int) noexcept {}

#endif

}  // namespace ormel::detail
