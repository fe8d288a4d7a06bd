#include "OrmelSDK/Concurrency/ExecutionState.h"

#include <utility>

#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"
#include "OrmelSDK/Concurrency/StrandCore.h"

namespace ormel::detail {

namespace {

constinit thread_local ExecutionState stateOfThread;

}  // namespace

ExecutionState& executionState() noexcept { return stateOfThread; }

ThreadHandoff::ThreadHandoff(bool isSo) noexcept : before_(std::exchange(stateOfThread.isLeaving, isSo)) {}
ThreadHandoff::~ThreadHandoff() { stateOfThread.isLeaving = before_; }

bool isLastPieceOfThread() noexcept { return !stateOfThread.strand || stateOfThread.strand->isNearlyDone(); }

bool isEndOfPiece() noexcept { return stateOfThread.endsWithCoroutine && !stateOfThread.next && isLastPieceOfThread(); }

bool onLibraryThread() noexcept { return stateOfThread.scheduler != nullptr || stateOfThread.isPoolThread; }

bool onThreadOfApplication() noexcept {
  const ExecutionState& state = stateOfThread;
  return state.scheduler ? state.scheduler->runsApplicationCode() : !state.isPoolThread;
}

bool mayRunApplicationCode() noexcept { return !stateOfThread.strand && onThreadOfApplication(); }

void requireBlockingAllowed() {
  if (onLibraryThread()) throw WouldDeadlockError();
}

namespace {

void drive(std::coroutine_handle<> coroutine, bool isWholePiece) noexcept {
  ExecutionState& state = stateOfThread;
  const auto outerNext = std::exchange(state.next, nullptr);
  const bool outerDriving = std::exchange(state.driving, true);
  const bool outerEndsWithCoroutine = std::exchange(state.endsWithCoroutine, isWholePiece && !outerDriving);
  while (coroutine) {
    coroutine.resume();
    coroutine = std::exchange(state.next, nullptr);
  }
  state.next = outerNext;
  state.driving = outerDriving;
  state.endsWithCoroutine = outerEndsWithCoroutine;
}

}  // namespace

void drive(std::coroutine_handle<> coroutine) noexcept { drive(coroutine, false); }
void drivePiece(std::coroutine_handle<> coroutine) noexcept { drive(coroutine, true); }

void transferTo(std::coroutine_handle<> coroutine) noexcept {
  ExecutionState& state = stateOfThread;
  if (state.driving && !state.next) {
    state.next = coroutine;
  } else {
    drive(coroutine);
  }
}

}  // namespace ormel::detail
