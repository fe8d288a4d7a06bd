#include "OrmelSDK/Concurrency/Sleep.h"

#include <utility>

#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Concurrency/Place.h"

namespace ormel {

Task<void> sleepFor(Scheduler& scheduler, std::chrono::nanoseconds duration) {
  const OneShot<void> elapsed("sleep");
  const Timer timer =
      scheduler.postAfter(duration, [resolver = elapsed.resolver()] { resolver.resume(); }, "sleep timer");
  co_await elapsed.wait();
}

Task<void> sleepFor(std::chrono::nanoseconds duration) {
  Scheduler* const here = detail::Place::current().scheduler();
  auto sleep = sleepFor(here ? *here : productionScheduler(), duration);
  co_await std::move(sleep);
}

}  // namespace ormel
