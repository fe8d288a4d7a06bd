#include "OrmelSDK/Platform/IORuntime.h"

#include "OrmelSDK/Platform/AllSignalsBlocked.h"

namespace ormel::detail {

namespace {

constexpr int threadCount = 2;

thread_local bool onPoolThread = false;

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
