#include "OrmelSDK/Concurrency/Sleep.h"

#include "OrmelSDK/Concurrency/OneShot.h"

namespace ormel {

Task<void> sleepFor(Scheduler& scheduler, std::chrono::nanoseconds duration) {
  const OneShot<void> elapsed("sleep");
  const Timer timer =
      scheduler.postAfter(duration, [resolver = elapsed.resolver()] { resolver.resume(); }, "sleep timer");
  co_await elapsed.wait();
}

}  // namespace ormel
