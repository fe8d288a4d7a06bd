#include "OrmelSDK/Platform/WatchedDescriptor.h"

#include <errno.h>
#include <fcntl.h>

#include <utility>

#include "OrmelSDK/Concurrency/ExecutionState.h"
#include "OrmelSDK/Platform/EventLoop.h"
#include "OrmelSDK/Platform/FailureInjection.h"
#include "OrmelSDK/Platform/IORuntime.h"
#include "OrmelSDK/Platform/ProcessLaunchError.h"

namespace ormel::detail {

namespace {

[[noreturn]] void failToWatch(int number) { throw ProcessLaunchError("descriptor", number); }

}  // namespace

WatchedDescriptor::WatchedDescriptor(EventLoop& loop, FileDescriptor descriptor)
    : loop_(loop), descriptor_(std::move(descriptor)) {
  if (const int number = injectedFailure(SystemCall::watch)) failToWatch(number);
  if (::fcntl(descriptor_.number(), F_SETFL, O_NONBLOCK | ::fcntl(descriptor_.number(), F_GETFL)) != 0) {
    failToWatch(errno);
  }
  key_ = loop_.addDescriptor();
  if (const int number = loop_.poller().add(descriptor_.number(), key_)) {
    loop_.removeDescriptor(key_);
    failToWatch(number);
  }
}

WatchedDescriptor::~WatchedDescriptor() { close(); }

void WatchedDescriptor::watch(Interest interest) noexcept {
  loop_.attachDescriptor(key_, *this);
  if (loop_.poller().change(descriptor_.number(), key_, interest) != 0) readyAgain();
}

void WatchedDescriptor::close() noexcept {
  if (!descriptor_.isOpen()) return;
  loop_.removeDescriptor(key_);
  // A forked process shares the system's side of the loop with its parent, which goes on.
  if (!IORuntime::shared().isForkedCopy()) loop_.poller().remove(descriptor_.number());
  descriptor_.close();
}

void WatchedDescriptor::becameReady(bool hungUp) noexcept {
  if (hungUp) hungUp_.store(true, std::memory_order_relaxed);
  State before = state_.load(std::memory_order_relaxed);
  for (;;) {
    State after = before;
    if (before == State::idle) after = State::queued;
    if (before == State::running) after = State::runningAndReady;
    // Also where nothing changes: the run that is to come must see what has become of the descriptor.
    if (!state_.compare_exchange_weak(before, after, std::memory_order_acq_rel)) continue;
    if (before == State::idle) queue();
    return;
  }
}

void WatchedDescriptor::queue() noexcept {
  runsFor_ = shared_from_this();
  loop_.post(*this, WorkKind::library, executionState().isLeaving);
}

void WatchedDescriptor::run() noexcept {
  const auto keptAlive = std::move(runsFor_);
  const ThreadHandoff leaving;
  // The code that it calls belongs to no scheduler.
  executionState().scheduler = nullptr;
  state_.exchange(State::running, std::memory_order_acq_rel);
  ready(hungUp_.load(std::memory_order_relaxed));
  State running = State::running;
  if (state_.compare_exchange_strong(running, State::idle, std::memory_order_acq_rel)) return;
  state_.store(State::queued, std::memory_order_release);
  queue();
}

}  // namespace ormel::detail
