#include "OrmelSDK/Platform/BlockingWork.h"

#include <exception>
#include <system_error>
#include <utility>

#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Platform/DetachedThread.h"
#include "OrmelSDK/Platform/IORuntime.h"
#include "OrmelSDK/Platform/SignalMask.h"

namespace ormel::detail {

namespace {

class WorkOnThreads final : public BlockingWork {
 public:
  void run(UniqueFunction<void()> work) override {
    try {
      startDetachedThread([piece = std::move(work), &mask = IORuntime::shared().applicationMask()]() mutable {
        const SignalMask ofTheApplication(mask);
        piece();
      });
    } catch (const std::system_error& error) {
      throw ResourceExhaustedError("threads", error.code().message());
    }
  }
};

void runInto(const OneShotResolver<void>& outcome, UniqueFunction<void()>& work) noexcept {
  try {
    work();
    outcome.resume();
  } catch (...) {
    outcome.fail(std::current_exception());
  }
}

}  // namespace

BlockingWork& BlockingWork::onThreads() {
  static auto& threads = *new WorkOnThreads();
  return threads;
}

Task<void> runBlocking(BlockingWork& where, UniqueFunction<void()> work) {
  const OneShot<void> outcome("blocking work");
  where.run([resolver = outcome.resolver(), piece = std::move(work)]() mutable { runInto(resolver, piece); });
  co_await outcome.wait();
}

}  // namespace ormel::detail
