#include "OrmelSDK/Platform/IORuntime.h"

#include <pthread.h>
#include <signal.h>

namespace ormel::detail {

namespace {

constexpr int threadCount = 2;

thread_local bool onPoolThread = false;

/// Blocks all signals in the calling thread, and so in the threads that it starts, until it goes away.
class AllSignalsBlocked {
 public:
  AllSignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~AllSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  AllSignalsBlocked(const AllSignalsBlocked&) = delete;
  AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

 private:
  sigset_t before_;
};

}  // namespace

IORuntime& IORuntime::shared() {
  static IORuntime runtime;
  return runtime;
}

bool IORuntime::isPoolThread() noexcept { return onPoolThread; }

IORuntime::IORuntime() : work_(context_.get_executor()) {
  const AllSignalsBlocked blocked;
  for (int started = 0; started < threadCount; ++started) {
    threads_.emplace_back([this] {
      onPoolThread = true;
      context_.run();
    });
  }
}

IORuntime::~IORuntime() {
  work_.reset();
  context_.stop();
  for (auto& thread : threads_) thread.join();
}

}  // namespace ormel::detail
