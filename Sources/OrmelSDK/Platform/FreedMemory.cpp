#include "OrmelSDK/Platform/FreedMemory.h"

#include <cstdlib>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace ormel::detail {

void keepFreedMemory() noexcept {
#ifdef __GLIBC__
  // A single larger block still goes back at once; more is not accepted here.
  ::mallopt(M_MMAP_THRESHOLD, 32 << 20);
  ::mallopt(M_TRIM_THRESHOLD, 64 << 20);
#endif
}

}  // namespace ormel::detail
