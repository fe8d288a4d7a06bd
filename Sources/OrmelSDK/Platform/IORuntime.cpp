#include "OrmelSDK/Platform/IORuntime.h"

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <asio/bind_allocator.hpp>
#include <asio/post.hpp>
#include <chrono>
#include <new>
#include <system_error>
#include <utility>

#include "OrmelSDK/Base/FatalError.h"
#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"
#include "OrmelSDK/Concurrency/ExecutionState.h"
#include "OrmelSDK/Concurrency/OutOfMemory.h"
#include "OrmelSDK/Platform/DetachedThread.h"
#include "OrmelSDK/Platform/FailureInjection.h"
#include "OrmelSDK/Platform/FileDescriptor.h"
#include "OrmelSDK/Platform/ReservedMemory.h"
#include "OrmelSDK/Platform/RunningChildren.h"
#include "OrmelSDK/Platform/SignalMask.h"

namespace ormel::detail {

namespace {

/// The threads that are kept when all is idle.
constexpr int usualThreads = 2;
/// How long a thread beyond these stays idle before it ends.
constexpr std::chrono::seconds idleTime(5);
/// How long the end of the process waits for threads that the application holds.
constexpr std::chrono::milliseconds timeToComeBack(100);
/// How soon code of the application is tried again for which no thread could be had.
constexpr std::chrono::milliseconds timeToNextTry(20);

/// Opens the descriptors of the standard streams that are closed, so that nothing that is opened meanwhile takes their
/// places: the application may put files of its own there later, over whatever it finds.
class StandardStreamsTaken {
 public:
  StandardStreamsTaken() noexcept {
    for (auto& descriptor : taken_) {
      FileDescriptor opened(::open("/dev/null", O_RDWR | O_CLOEXEC));
      if (opened.number() > STDERR_FILENO) break;
      descriptor = std::move(opened);
    }
  }

 private:
  std::array<FileDescriptor, 3> taken_;
};

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
  return runtime;
}

void IORuntime::start() {
  if (isStarted_.load(std::memory_order_acquire) && !isForkedCopy()) return;
  // Before the mutex, which another thread may have held when this process was forked.
  if (isForkedCopy()) throw ForkedProcessError();
  const std::lock_guard lock(startMutex_);
  if (isStarted_.load(std::memory_order_relaxed)) return;
  try {
    startLocked();
  } catch (const std::bad_alloc& failure) {
    throw ResourceExhaustedError("memory", failure.what());
  }
}

void IORuntime::startLocked() {
  static const Ending atTheEndOfTheProcess(*this);
  static const int forkIsNoticed = ::pthread_atfork(nullptr, nullptr, [] { shared().isForkedCopy_ = true; });
  if (forkIsNoticed != 0) throw ResourceExhaustedError("memory", std::generic_category().message(forkIsNoticed));
  if (!context_) makeContext();
  applicationMask_ = currentSignalMask();
  while (available_ < usualThreads) startThread();
  fewestAvailable_ = usualThreads;
  isStarted_.store(true, std::memory_order_release);
}

void IORuntime::makeContext() {
  const StandardStreamsTaken taken;
  try {
    if (const int failure = injectedFailure(SystemCall::makeContext)) {
      throw std::system_error(failure, std::generic_category());
    }
    context_.emplace();
    work_.emplace(context_->get_executor());
    anotherTry_.emplace(*context_);
    idleWatch_.emplace(*context_);
    reserveRoomForTimers();
  } catch (const std::system_error& error) {
    dropContext();
    throw ResourceExhaustedError("descriptors", error.code().message());
  } catch (...) {
    dropContext();
    throw;
  }
}

void IORuntime::dropContext() noexcept {
  idleWatch_.reset();
  anotherTry_.reset();
  work_.reset();
  context_.reset();
}

/// Arming a timer is to take no memory later, where its failure could be told to nobody. The context keeps the room
/// that it has once had.
void IORuntime::reserveRoomForTimers() {
  asio::steady_timer ofScheduler(*context_);
  for (asio::steady_timer* timer : {&*anotherTry_, &*idleWatch_, &ofScheduler}) {
    timer->expires_after(idleTime);
    timer->async_wait([](std::error_code) {});
  }
  anotherTry_->cancel();
  idleWatch_->cancel();
}

asio::io_context& IORuntime::context() noexcept {
  if (!isStarted_.load(std::memory_order_acquire)) {
    try {
      start();
    } catch (const Error& error) {
      fatalError(error.description());
    }
  }
  return *context_;
}

const sigset_t& IORuntime::applicationMask() {
  start();
  return applicationMask_;
}

void IORuntime::startThread() {
  const SignalMask blocked(asynchronousSignals());
  ++available_;
  try {
    startDetachedThread([this] { serve(); });
  } catch (const std::system_error& error) {
    --available_;
    throw ResourceExhaustedError("threads", error.code().message());
  } catch (...) {
    --available_;
    throw;
  }
}

void IORuntime::serve() noexcept {
  executionState().isPoolThread = true;
  for (;;) {
    try {
      context_->run();
      break;
    } catch (const Retirement&) {
      if (mayRetire()) return;
    } catch (const std::bad_alloc&) {
      failForMemory("the reading and writing of pipes");
    }
  }
  const std::lock_guard lock(endMutex_);
  --available_;
  threadLeft_.notify_all();
}

bool IORuntime::mayRetire() noexcept {
  int now = available_;
  while (now > usualThreads) {
    if (available_.compare_exchange_weak(now, now - 1)) {
      const std::lock_guard lock(endMutex_);
      threadLeft_.notify_all();
      return true;
    }
  }
  // Others have been lent since it was idle.
  return false;
}

bool IORuntime::lendThread(WorkItem& item) noexcept {
  // Before it is counted out, so that the end of the process finds it in one of the two.
  ++lent_;
  const int left = available_.fetch_sub(1) - 1;
  if (isEnding_) {
    --lent_;
    stayAway();
  }
  if (left < fewestAvailable_.load(std::memory_order_relaxed)) fewestAvailable_.store(left, std::memory_order_relaxed);
  if (left == 0) {
    try {
      startThread();
    } catch (...) {
      ++available_;
      --lent_;
      postAgainLater(item);
      return false;
    }
  }
  executionState().isPoolThread = false;
  pthread_sigmask(SIG_SETMASK, &applicationMask_, nullptr);
  return true;
}

void IORuntime::takeThreadBack() noexcept {
  static const sigset_t blocked = asynchronousSignals();
  pthread_sigmask(SIG_SETMASK, &blocked, nullptr);
  executionState().isPoolThread = true;
  --lent_;
  if (isEnding_) stayAway();
  const int nowAvailable = available_.fetch_add(1) + 1;
  if (hasKeptItems_.load(std::memory_order_acquire)) postKeptItems();
  if (nowAvailable > usualThreads && !isWatchingForIdle_.load(std::memory_order_relaxed)) watchForIdleThreads();
}

void IORuntime::stayAway() noexcept {
  {
    const std::lock_guard lock(endMutex_);
    threadLeft_.notify_all();
  }
  for (;;) ::pause();
}

void IORuntime::postAgainLater(WorkItem& item) noexcept {
  const std::lock_guard lock(keptMutex_);
  item.next = nullptr;
  WorkItem** end = &keptItems_;
  while (*end) end = &(*end)->next;
  *end = &item;
  if (hasKeptItems_.exchange(true, std::memory_order_release)) return;
  anotherTry_->expires_after(timeToNextTry);
  anotherTry_->async_wait(asio::bind_allocator(ReservedAllocator<void>(), [this](std::error_code cancelled) {
    if (!cancelled) postKeptItems();
  }));
}

void IORuntime::postKeptItems() noexcept {
  WorkItem* item = nullptr;
  {
    const std::lock_guard lock(keptMutex_);
    item = std::exchange(keptItems_, nullptr);
    hasKeptItems_ = false;
  }
  while (item) productionScheduler().post(*std::exchange(item, item->next));
}

void IORuntime::watchForIdleThreads() {
  if (isWatchingForIdle_.exchange(true)) return;
  fewestAvailable_ = available_.load();
  idleWatch_->expires_after(idleTime);
  idleWatch_->async_wait(
      asio::bind_allocator(ReservedAllocator<void>(), [this](std::error_code) { retireIdleThreads(); }));
}

void IORuntime::askToRetire(int count) noexcept {
  for (int asked = 0; asked < count; ++asked) {
    asio::post(*context_, asio::bind_allocator(ReservedAllocator<void>(), [] { throw Retirement(); }));
  }
}

void IORuntime::retireIdleThreads() {
  const int idle = fewestAvailable_.load() - usualThreads;
  askToRetire(idle);
  isWatchingForIdle_ = false;
  if (available_ - std::max(idle, 0) > usualThreads) watchForIdleThreads();
}

void IORuntime::endThreads() noexcept {
  // A forked child process has a copy of this object, but none of its threads.
  if (isForkedCopy() || !context_) return;
  RunningChildren::shared().terminate();
  isEnding_ = true;
  context_->stop();
  const bool onPoolThread = executionState().isPoolThread;
  const bool onLentThread = !onPoolThread && executionState().scheduler != nullptr;
  std::unique_lock lock(endMutex_);
  threadLeft_.wait(lock, [&] { return available_ <= (onPoolThread ? 1 : 0); });
  threadLeft_.wait_for(lock, timeToComeBack, [&] { return lent_ <= (onLentThread ? 1 : 0); });
}

}  // namespace ormel::detail
