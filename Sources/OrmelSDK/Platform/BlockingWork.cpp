#include "OrmelSDK/Platform/BlockingWork.h"

#include <exception>
#include <thread>
#include <utility>

#include "OrmelSDK/Concurrency/OneShot.h"
#include "OrmelSDK/Platform/AllSignalsBlocked.h"

namespace ormel::detail {

namespace {

class WorkOnThreads final : public BlockingWork {
 public:
  void run(UniqueFunction<void()> work) override {
    const AllSignalsBlocked blocked;
    std::thread([piece = std::move(work)]() mutable { piece(); }).detach();
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
  static WorkOnThreads threads;
  return threads;
}

Task<void> runBlocking(BlockingWork& where, UniqueFunction<void()> work) {
  const OneShot<void> outcome("blocking work");
  where.run([resolver = outcome.resolver(), piece = std::move(work)]() mutable { runInto(resolver, piece); });
  co_await outcome.wait();
}

}  // namespace ormel::detail
