#include "OrmelSDK/Platform/EventLoop.h"

#include <algorithm>
#include <utility>

#include "OrmelSDK/Concurrency/ExecutionState.h"
#include "OrmelSDK/Platform/WatchedDescriptor.h"

namespace ormel::detail {

namespace {

constexpr std::size_t eventsAtOnce = 64;

/// The loop that the calling thread serves, also while the thread is lent to the application.
constinit thread_local const EventLoop* servedHere = nullptr;

}  // namespace

void EventLoop::Queue::push(WorkItem& item) noexcept {
  item.next = nullptr;
  (last ? last->next : first) = &item;
  last = &item;
}

WorkItem& EventLoop::Queue::pop() noexcept {
  WorkItem& item = *first;
  first = item.next;
  if (!first) last = nullptr;
  return item;
}

void EventLoop::post(WorkItem& item, WorkKind kind, bool staysHere) noexcept {
  const std::lock_guard lock(mutex_);
  queues_[static_cast<std::size_t>(kind)].push(item);
  if (!staysHere || servedHere != this) wakeForPost();
}

void EventLoop::wakeForPost() noexcept {
  if (parked_) return unpark();
  // Threads that run a piece take this one next.
  if (!isPolling_ || std::exchange(isWakeUpSent_, true)) return;
  poller_.wakeUp();
}

void EventLoop::expectThread() noexcept {
  const std::lock_guard lock(mutex_);
  ++serving_;
}

void EventLoop::giveUpThread() noexcept {
  const std::lock_guard lock(mutex_);
  --serving_;
}

void EventLoop::serve() noexcept {
  servedHere = this;
  std::unique_lock lock(mutex_);
  while (!isStopped_) {
    if (hasWork() && !isPollDue()) {
      runNext(lock);
    } else if (!isPolling_) {
      poll(lock);
    } else if (!park(lock)) {
      break;
    }
  }
  --serving_;
}

void EventLoop::stop() noexcept {
  const std::lock_guard lock(mutex_);
  isStopped_ = true;
  while (parked_) unpark();
  poller_.wakeUp();
}

void EventLoop::runNext(std::unique_lock<std::mutex>& lock) noexcept {
  const auto other = lastKind_ == WorkKind::library ? WorkKind::application : WorkKind::library;
  if (queues_[static_cast<std::size_t>(other)].first) lastKind_ = other;
  const WorkKind kind = lastKind_;
  WorkItem& item = queues_[static_cast<std::size_t>(kind)].pop();
  ++piecesSincePoll_;
  if (hasWork() && parked_) unpark();
  lock.unlock();
  run_(item, kind);
  lock.lock();
}

void EventLoop::poll(std::unique_lock<std::mutex>& lock) noexcept {
  const bool mayWait = !hasWork();
  isPolling_ = true;
  piecesSincePoll_ = 0;
  lock.unlock();
  std::array<PollEvent, eventsAtOnce> events;
  const auto count = poller_.wait(events, mayWait ? timeToSleep() : std::chrono::nanoseconds(0));
  noteAwake();
  lock.lock();
  isPolling_ = false;
  isWakeUpSent_ = false;
  lock.unlock();
  const ThreadHandoff leaving;
  wakeTimers();
  for (std::size_t index = 0; index < count; ++index) queueReady(events[index]);
  lock.lock();
}

std::chrono::nanoseconds EventLoop::timeToSleep() noexcept {
  const std::lock_guard lock(timersMutex_);
  sleepsUntil_ = std::min(interruptedFor_, timers_.empty() ? noDeadline : timers_.nextDeadline());
  if (sleepsUntil_ == noDeadline) return Poller::forEver;
  const auto time = now();
  if (interruptedFor_ <= time) interruptedFor_ = noDeadline;
  if (sleepsUntil_ <= time) return std::chrono::nanoseconds(0);
  constexpr std::uint64_t longest = std::chrono::nanoseconds(std::chrono::hours(1)).count();
  return std::chrono::nanoseconds(static_cast<std::int64_t>(std::min(sleepsUntil_ - time, longest)));
}

/// To be done while no other thread may poll, whose sleep it would hide from those that arm a timer.
void EventLoop::noteAwake() noexcept {
  const std::lock_guard lock(timersMutex_);
  sleepsUntil_ = 0;
}

void EventLoop::wakeTimers() noexcept {
  const std::lock_guard lock(timersMutex_);
  if (timers_.empty()) return;
  const auto time = now();
  while (TimerItem* due = timers_.takeDue(time)) due->fallDue();
}

std::uint64_t EventLoop::now() noexcept {
  const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(sinceStart).count());
}

void EventLoop::arm(TimerItem& item, std::uint64_t deadline) {
  const std::lock_guard lock(timersMutex_);
  timers_.add(item, deadline);
  if (deadline >= sleepsUntil_) return;
  sleepsUntil_ = interruptedFor_ = deadline;
  poller_.wakeUp();
}

bool EventLoop::disarm(TimerItem& item) noexcept {
  const std::lock_guard lock(timersMutex_);
  return timers_.remove(item);
}

bool EventLoop::leave() noexcept {
  const std::lock_guard lock(mutex_);
  if (serving_ == 1) return false;
  --serving_;
  ++leaves_;
  // The only other thread may be asleep in the poller, because the queued work was left to this one.
  if (hasWork() && isPolling_ && serving_ - parkedCount_ == 1) wakeForPost();
  if (isAttended()) return true;
  if (piecesToHandOver_ > 0 || hasWork() || !hasRelief_) {
    if (piecesToHandOver_ > 0) --piecesToHandOver_;
    wantsRelief_ = true;
    unpark();
  }
  return true;
}

void EventLoop::comeBack() noexcept {
  const std::lock_guard lock(mutex_);
  ++serving_;
}

/// Waits until the thread is needed. False if it has not been for long.
bool EventLoop::park(std::unique_lock<std::mutex>& lock) noexcept {
  Parked here;
  here.below = std::exchange(parked_, &here);
  ++parkedCount_;
  const auto isWoken = [&here] { return here.isWoken; };
  if (wantsRelief_ && !hasRelief_) {
    hasRelief_ = true;
    here.wake.wait_for(lock, reliefPeriod, isWoken);
    hasRelief_ = false;
    if (here.isWoken) return true;
    reliefLooks();
    remove(here);
    return true;
  }
  if (serving_ <= usualThreads) {
    here.wake.wait(lock, isWoken);
    return true;
  }
  if (here.wake.wait_for(lock, idleTime, isWoken)) return true;
  remove(here);
  return serving_ <= usualThreads;
}

void EventLoop::reliefLooks() noexcept {
  if (!isAttended()) piecesToHandOver_ = piecesAfterOneThatLasts;
  if (std::exchange(leavesSeen_, leaves_) != leaves_) {
    quietPeriods_ = 0;
  } else if (++quietPeriods_ >= quietPeriods) {
    wantsRelief_ = false;
    quietPeriods_ = 0;
  }
}

/// Wakes the thread that was parked last; told under the lock, because the thread may go on by itself otherwise.
void EventLoop::unpark() noexcept {
  Parked& top = *parked_;
  remove(top);
  top.isWoken = true;
  top.wake.notify_one();
}

void EventLoop::remove(const Parked& parked) noexcept {
  Parked** place = &parked_;
  while (*place != &parked) place = &(*place)->below;
  *place = parked.below;
  --parkedCount_;
}

std::uint64_t EventLoop::addDescriptor() {
  const std::lock_guard lock(descriptorsMutex_);
  descriptors_.emplace(++lastKey_, nullptr);
  return lastKey_;
}

void EventLoop::attachDescriptor(std::uint64_t key, WatchedDescriptor& descriptor) noexcept {
  const std::lock_guard lock(descriptorsMutex_);
  const auto found = descriptors_.find(key);
  if (found != descriptors_.end()) found->second = &descriptor;
}

void EventLoop::removeDescriptor(std::uint64_t key) noexcept {
  const std::lock_guard lock(descriptorsMutex_);
  descriptors_.erase(key);
}

void EventLoop::queueReady(const PollEvent& event) noexcept {
  std::shared_ptr<WatchedDescriptor> descriptor;
  {
    const std::lock_guard lock(descriptorsMutex_);
    const auto found = descriptors_.find(event.key);
    if (found != descriptors_.end() && found->second) descriptor = found->second->weak_from_this().lock();
  }
  if (descriptor) descriptor->becameReady(event.hungUp);
}

}  // namespace ormel::detail
