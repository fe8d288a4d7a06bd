#include "OrmelSDK/Platform/TerminationWatch.h"

#include <errno.h>

#include "OrmelSDK/Platform/ProcessLaunchError.h"
#include "OrmelSDK/Platform/WatchedDescriptor.h"

namespace ormel::detail {

/// Becomes readable when the child has ended, and keeps its watch alive until then.
class TerminationWatch::EndDescriptor final : public WatchedDescriptor {
 public:
  EndDescriptor(EventLoop& loop, FileDescriptor descriptor, std::shared_ptr<TerminationWatch> watch)
      : WatchedDescriptor(loop, std::move(descriptor)), watch_(std::move(watch)) {}

  void begin() noexcept {
    const std::lock_guard lock(mutex_);
    keepsItself_ = shared_from_this();
    watch(Interest::reading);
  }

 private:
  void ready(bool) noexcept override {
    if (!watch_->hasEnded()) return;
    std::shared_ptr<WatchedDescriptor> kept;
    {
      const std::lock_guard lock(mutex_);
      close();
      kept = std::move(keepsItself_);
    }
    watch_->tellEnd();
  }

  std::mutex mutex_;
  const std::shared_ptr<TerminationWatch> watch_;
  std::shared_ptr<WatchedDescriptor> keepsItself_;
};

void TerminationWatch::begin(EventLoop& loop) {
  try {
    auto descriptor = FileDescriptor::duplicate(process_.endDescriptor());
    if (!descriptor.isOpen()) throw ProcessLaunchError("descriptor", errno);
    const auto end = std::make_shared<EndDescriptor>(loop, std::move(descriptor), shared_from_this());
    RunningChildren::shared().add(process_);
    end->begin();
  } catch (...) {
    process_.killAndReap();
    throw;
  }
}

bool TerminationWatch::hasEnded() noexcept {
  if (!process_.reapIfEnded()) return false;
  const std::lock_guard lock(mutex_);
  RunningChildren::shared().remove(process_);
  return true;
}

void TerminationWatch::tellEnd() noexcept {
  TerminationHandler handler;
  {
    const std::lock_guard lock(mutex_);
    handler = std::exchange(onTermination_, nullptr);
  }
  if (handler) handler(*process_.termination());
}

void TerminationWatch::forgetHandler() noexcept {
  TerminationHandler released;
  const std::lock_guard lock(mutex_);
  released.swap(onTermination_);
}

}  // namespace ormel::detail
