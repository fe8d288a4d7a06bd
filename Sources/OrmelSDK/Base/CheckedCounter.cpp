#include "OrmelSDK/Base/CheckedCounter.h"

#include <limits>

#include "OrmelSDK/Base/FatalError.h"

namespace ormel::detail {

void incrementCounter(std::uint64_t& counter) {
  if (counter == std::numeric_limits<std::uint64_t>::max()) fatalError("a counter overflowed");
  ++counter;
}

}  // namespace ormel::detail
