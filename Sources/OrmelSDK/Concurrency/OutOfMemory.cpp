#include "OrmelSDK/Concurrency/OutOfMemory.h"

#include <cstdio>

#include "OrmelSDK/Base/FatalError.h"

namespace ormel::detail {

void failForMemory(const char* work) noexcept {
  char reason[128];
  std::snprintf(reason, sizeof reason, "Out of memory in: %s", work);
  fatalError(reason);
}

}  // namespace ormel::detail
