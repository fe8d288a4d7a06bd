#include "OrmelSDK/Platform/FreedMemory.h"

#include <cstdlib>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace ormel::detail {

void keepFreedMemory() noexcept {
#ifdef __GLIBC__
  // The largest value accepted; a single larger block is still returned at once.
  ::mallopt(M_MMAP_THRESHOLD, 32 << 20);
  ::mallopt(M_TRIM_THRESHOLD, 64 << 20);
#endif
}

}  // namespace ormel::detail
