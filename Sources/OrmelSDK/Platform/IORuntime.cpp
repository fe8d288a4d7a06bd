#include "OrmelSDK/Platform/IORuntime.h"

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <new>
#include <system_error>
#include <utility>

#include "OrmelSDK/Base/FatalError.h"
#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"
#include "OrmelSDK/Concurrency/ExecutionState.h"
#include "OrmelSDK/Platform/DetachedThread.h"
#include "OrmelSDK/Platform/FailureInjection.h"
#include "OrmelSDK/Platform/FileDescriptor.h"
#include "OrmelSDK/Platform/RunningChildren.h"
#include "OrmelSDK/Platform/SignalMask.h"

namespace ormel::detail {

namespace {

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

/// Code of the application for which no thread could be had is tried again when this falls due. It may be armed again
/// while it waits to run.
class IORuntime::AnotherTry final : public TimerItem {
 public:
  void arm() noexcept {
    if (isArmed_.exchange(true)) return;
    try {
      shared().loop_->arm(*this, EventLoop::now() + std::chrono::nanoseconds(timeToNextTry).count());
    } catch (...) {
      fallDue();
    }
  }
  void fallDue() noexcept override { ioScheduler().post(*this); }
  void run() noexcept override {
    isArmed_ = false;
    shared().postKeptItems();
  }
  void discard() noexcept override {}
  const char* name() const noexcept override { return "another try"; }

 private:
  std::atomic<bool> isArmed_{false};
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
  if (!loop_) makeLoop();
  applicationMask_ = currentSignalMask();
  while (loop_->serving() < EventLoop::usualThreads) startThread();
  isStarted_.store(true, std::memory_order_release);
}

void IORuntime::makeLoop() {
  const StandardStreamsTaken taken;
  try {
    if (const int failure = injectedFailure(SystemCall::makeContext)) {
      throw std::system_error(failure, std::generic_category());
    }
    loop_.emplace(&IORuntime::run);
  } catch (const std::system_error& error) {
    throw ResourceExhaustedError("descriptors", error.code().message());
  }
}

EventLoop& IORuntime::loop() noexcept {
  if (!isStarted_.load(std::memory_order_acquire)) {
    try {
      start();
    } catch (const Error& error) {
      fatalError(error.description());
    }
  }
  return *loop_;
}

const sigset_t& IORuntime::applicationMask() {
  start();
  return applicationMask_;
}

void IORuntime::startThread() {
  const SignalMask blocked(asynchronousSignals());
  loop_->expectThread();
  try {
    startDetachedThread([this] { serve(); });
  } catch (const std::system_error& error) {
    loop_->giveUpThread();
    throw ResourceExhaustedError("threads", error.code().message());
  } catch (...) {
    loop_->giveUpThread();
    throw;
  }
}

void IORuntime::serve() noexcept {
  executionState().isPoolThread = true;
  loop_->serve();
  const std::lock_guard lock(endMutex_);
  threadLeft_.notify_all();
}

void IORuntime::run(WorkItem& item, WorkKind kind) noexcept {
  if (kind == WorkKind::application) return shared().runForApplication(item);
  executionState().scheduler = &ioScheduler();
  item.run();
  executionState().scheduler = nullptr;
}

void IORuntime::runForApplication(WorkItem& item) noexcept {
  if (!lendThread(item)) return;
  executionState().scheduler = &productionScheduler();
  item.run();
  executionState().scheduler = nullptr;
  takeThreadBack();
}

bool IORuntime::lendThread(WorkItem& item) noexcept {
  // Before it is counted out, so that the end of the process finds it in one of the two.
  ++lent_;
  while (!loop_->leave()) {
    try {
      startThread();
    } catch (...) {
      --lent_;
      postAgainLater(item);
      return false;
    }
  }
  if (isEnding_) {
    --lent_;
    stayAway();
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
  loop_->comeBack();
  if (hasKeptItems_.load(std::memory_order_acquire)) postKeptItems();
}

void IORuntime::stayAway() noexcept {
  {
    const std::lock_guard lock(endMutex_);
    threadLeft_.notify_all();
  }
  for (;;) ::pause();
}

void IORuntime::postAgainLater(WorkItem& item) noexcept {
  {
    const std::lock_guard lock(keptMutex_);
    item.next = nullptr;
    WorkItem** end = &keptItems_;
    while (*end) end = &(*end)->next;
    *end = &item;
    if (hasKeptItems_.exchange(true, std::memory_order_release)) return;
  }
  static AnotherTry anotherTry;
  anotherTry.arm();
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

void IORuntime::endThreads() noexcept {
  // A forked child process has a copy of this object, but none of its threads.
  if (isForkedCopy() || !loop_) return;
  RunningChildren::shared().terminate();
  isEnding_ = true;
  loop_->stop();
  const bool onPoolThread = executionState().isPoolThread;
  const bool onLentThread = !onPoolThread && executionState().scheduler != nullptr;
  std::unique_lock lock(endMutex_);
  threadLeft_.wait(lock, [&] { return loop_->serving() <= (onPoolThread ? 1 : 0); });
  threadLeft_.wait_for(lock, timeToComeBack, [&] { return lent_ <= (onLentThread ? 1 : 0); });
}

}  // namespace ormel::detail
