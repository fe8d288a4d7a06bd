#include "OrmelSDK/Platform/IORuntime.h"

#include <unistd.h>

#include "OrmelSDK/Concurrency/ExecutionState.h"
#include "OrmelSDK/Platform/AllSignalsBlocked.h"

namespace ormel::detail {

namespace {

constexpr int threadCount = 2;

}  // namespace

class IORuntime::Ending {
 public:
  explicit Ending(IORuntime& runtime) noexcept : runtime_(runtime) {}
  Ending(const Ending&) = delete;
  Ending& operator=(const Ending&) = delete;
  ~Ending() { runtime_.endThreads(); }

 private:
  IORuntime& runtime_;
};

IORuntime& IORuntime::shared() {
  static IORuntime& runtime = *new IORuntime();
  static const Ending atTheEndOfTheProcess(runtime);
  return runtime;
}

IORuntime::IORuntime() : process_(::getpid()), work_(context_.get_executor()) {
  const AllSignalsBlocked blocked;
  for (int started = 0; started < threadCount; ++started) {
    threads_.emplace_back([this] {
      executionState().isPoolThread = true;
      context_.run();
    });
  }
}

void IORuntime::endThreads() {
  // A forked child process has a copy of this object, but none of its threads.
  if (::getpid() != process_) return;
  context_.stop();
  for (auto& thread : threads_) {
    if (thread.get_id() != std::this_thread::get_id()) thread.join();
  }
}

}  // namespace ormel::detail
