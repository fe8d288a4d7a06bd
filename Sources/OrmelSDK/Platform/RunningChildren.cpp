#include "OrmelSDK/Platform/RunningChildren.h"

#include <signal.h>

namespace ormel::detail {

RunningChildren& RunningChildren::shared() {
  static auto& children = *new RunningChildren();
  return children;
}

void RunningChildren::add(ProcessHandle& child) {
  const std::lock_guard lock(mutex_);
  children_.insert(&child);
}

void RunningChildren::remove(ProcessHandle& child) noexcept {
  const std::lock_guard lock(mutex_);
  children_.erase(&child);
}

void RunningChildren::terminate() noexcept {
  const std::lock_guard lock(mutex_);
  for (ProcessHandle* child : children_) child->signal(SIGTERM);
}

}  // namespace ormel::detail
