#include "Expectations/Registry.h"
#include "OrmelSDK/Management/ThreadParams.h"

namespace ormel::tests {

void registerThreadLists(Registry& registry) {
  registry.enumeration<ThreadSortKey>();
  registry.enumeration<ThreadSortDirection>();
  registry.enumeration<ThreadTurnSortDirection>();
  registry.enumeration<ThreadSourceKind>();
}

}  // namespace ormel::tests
