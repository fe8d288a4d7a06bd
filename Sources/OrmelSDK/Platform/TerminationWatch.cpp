#include "OrmelSDK/Platform/TerminationWatch.h"

#include <errno.h>

#include <asio/bind_allocator.hpp>

#include "OrmelSDK/Platform/ProcessLaunchError.h"
#include "OrmelSDK/Platform/ReservedMemory.h"
#include "OrmelSDK/Platform/WatchedDescriptor.h"

namespace ormel::detail {

void TerminationWatch::begin(asio::io_context& context) {
  try {
    auto descriptor = FileDescriptor::duplicate(process_.endDescriptor());
    if (!descriptor.isOpen()) throw ProcessLaunchError("descriptor", errno);
    const std::lock_guard lock(mutex_);
    endDescriptor_.emplace(watchedDescriptor(context, std::move(descriptor)));
    RunningChildren::shared().add(process_);
    waitLocked();
  } catch (...) {
    process_.killAndReap();
    throw;
  }
}

void TerminationWatch::waitLocked() {
  endDescriptor_->async_wait(
      asio::posix::stream_descriptor::wait_read,
      asio::bind_allocator(ReservedAllocator<void>(),
                           [self = shared_from_this()](const asio::error_code&) { self->checkForEnd(); }));
}

void TerminationWatch::checkForEnd() {
  const auto termination = process_.reapIfEnded();
  TerminationHandler handler;
  {
    const std::lock_guard lock(mutex_);
    if (!termination) return waitLocked();
    RunningChildren::shared().remove(process_);
    endDescriptor_.reset();
    handler = std::exchange(onTermination_, nullptr);
  }
  if (handler) handler(*termination);
}

void TerminationWatch::forgetHandler() noexcept {
  TerminationHandler released;
  const std::lock_guard lock(mutex_);
  released.swap(onTermination_);
}

}  // namespace ormel::detail
