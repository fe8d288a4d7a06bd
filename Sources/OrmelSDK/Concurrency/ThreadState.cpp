#include "OrmelSDK/Concurrency/ThreadState.h"

#include <utility>

#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"
#include "OrmelSDK/Concurrency/StrandCore.h"
#include "OrmelSDK/Platform/IORuntime.h"

namespace ormel::detail {

namespace {

constinit thread_local ThreadState stateOfThread;

}  // namespace

ThreadState& threadState() noexcept { return stateOfThread; }

LeavingThread::LeavingThread(bool isSo) noexcept : before_(std::exchange(stateOfThread.isLeaving, isSo)) {}
LeavingThread::~LeavingThread() { stateOfThread.isLeaving = before_; }

bool isLastPieceOfThread() noexcept { return !stateOfThread.strand || stateOfThread.strand->isOnLastPiece(); }

bool onLibraryThread() noexcept { return stateOfThread.scheduler != nullptr || IORuntime::isPoolThread(); }

void requireBlockingAllowed() {
  if (onLibraryThread()) throw WouldDeadlockError();
}

void drive(std::coroutine_handle<> coroutine) noexcept {
  ThreadState& state = stateOfThread;
  const auto outerNext = std::exchange(state.next, nullptr);
  const bool outerDriving = std::exchange(state.driving, true);
  while (coroutine) {
    coroutine.resume();
    coroutine = std::exchange(state.next, nullptr);
  }
  state.next = outerNext;
  state.driving = outerDriving;
}

void transferTo(std::coroutine_handle<> coroutine) noexcept {
  ThreadState& state = stateOfThread;
  if (state.driving && !state.next) {
    state.next = coroutine;
  } else {
    drive(coroutine);
  }
}

}  // namespace ormel::detail
