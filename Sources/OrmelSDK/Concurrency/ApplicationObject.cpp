#include "OrmelSDK/Concurrency/ApplicationObject.h"

#include "OrmelSDK/Concurrency/ExecutionState.h"
#include "OrmelSDK/Concurrency/Place.h"

namespace ormel::detail {

void runForApplication(WorkItem& item) noexcept {
  if (onThreadOfApplication()) {
    item.run();
  } else {
    Place().post(item);
  }
}

}  // namespace ormel::detail
