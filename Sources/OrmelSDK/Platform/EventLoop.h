#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <unordered_map>

#include "OrmelSDK/Concurrency/TimerQueue.h"
#include "OrmelSDK/Platform/Poller.h"

namespace ormel::detail {

class WatchedDescriptor;

/// Whose code a piece of work is.
enum class WorkKind : std::size_t { library, application };

/// Queued work, timers and descriptors, served by any number of threads.
///
/// One thread at a time waits in the poller. It runs what an event leads to by itself, and only wakes another one if
/// there is more than it can run at once: so an event in an idle process costs one wait and no hand-over. Threads that
/// have nothing to do are parked, the last one on top, so that those below notice how long nobody has needed them.
///
/// Code of the application may block the thread that runs it, so that thread leaves the loop meanwhile. Another must
/// then wait in the poller. Waking it for each such piece would cost more than most pieces last; so one parked thread,
/// the relief, looks every millisecond, for as long as pieces come, whether anyone attends to the loop. Once a piece
/// was found to last, the next ones wake a thread at once.
///
/// *Thread safety*: all members may be called from any thread.
class EventLoop {
 public:
  /// Runs a piece on a serving thread, which may `leave` for it and then must `comeBack`.
  using Runner = void (*)(WorkItem& item, WorkKind kind) noexcept;

  /// Fails with `std::system_error`.
  explicit EventLoop(Runner run) : run_(run) {}
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  /// Queues a piece of work. If the calling thread serves the loop and is about to take its next piece (`staysHere`),
  /// no other thread is woken for it.
  void post(WorkItem& item, WorkKind kind, bool staysHere) noexcept;

  /// Nanoseconds on the clock of the timers.
  static std::uint64_t now() noexcept;
  void arm(TimerItem& item, std::uint64_t deadline);
  /// Returns true if the item was still waiting.
  bool disarm(TimerItem& item) noexcept;

  /// Counts a thread in that is about to call `serve`.
  void expectThread() noexcept;
  /// Counts it out again if it could not be started.
  void giveUpThread() noexcept;
  /// Runs what there is to run, until the loop is stopped or the thread has been idle for long and is not needed.
  void serve() noexcept;
  /// Counts the calling thread out while it runs code of the application. Gives false, and does nothing, if it is the
  /// only one: another is to be started first.
  bool leave() noexcept;
  void comeBack() noexcept;
  /// The threads that serve the loop, or are about to.
  int serving() const noexcept { return serving_.load(std::memory_order_acquire); }
  /// Ends `serve` on all threads. Work posted later never runs.
  void stop() noexcept;

  Poller& poller() noexcept { return poller_; }
  /// Makes room for a descriptor, whose events are dropped until `attachDescriptor`.
  std::uint64_t addDescriptor();
  /// To be called once the object is held by a `std::shared_ptr`.
  void attachDescriptor(std::uint64_t key, WatchedDescriptor& descriptor) noexcept;
  void removeDescriptor(std::uint64_t key) noexcept;

  /// The threads that stay when all is idle.
  static constexpr int usualThreads = 2;
  /// How long a thread beyond these stays idle before it ends.
  static constexpr std::chrono::seconds idleTime{5};

 private:
  struct Parked {
    std::condition_variable wake;
    Parked* below = nullptr;
    bool isWoken = false;
  };
  struct Queue {
    WorkItem* first = nullptr;
    WorkItem* last = nullptr;

    void push(WorkItem& item) noexcept;
    WorkItem& pop() noexcept;
  };

  bool hasWork() const noexcept { return queues_[0].first || queues_[1].first; }
  bool isAttended() const noexcept { return isPolling_ || serving_ > parkedCount_; }
  bool isPollDue() const noexcept { return piecesSincePoll_ >= piecesBetweenPolls && !isPolling_; }

  void runNext(std::unique_lock<std::mutex>& lock) noexcept;
  void poll(std::unique_lock<std::mutex>& lock) noexcept;
  std::chrono::nanoseconds timeToSleep() noexcept;
  void noteAwake() noexcept;
  void wakeTimers() noexcept;
  void queueReady(const PollEvent& event) noexcept;
  bool park(std::unique_lock<std::mutex>& lock) noexcept;
  void unpark() noexcept;
  void remove(const Parked& parked) noexcept;
  void reliefLooks() noexcept;
  void wakeForPost() noexcept;

  static constexpr std::uint64_t noDeadline = ~std::uint64_t{0};
  /// A poll at least this often, so that long queues do not hold descriptors and timers up.
  static constexpr int piecesBetweenPolls = 16;
  static constexpr std::chrono::milliseconds reliefPeriod{1};
  /// The relief stays this many periods after the last piece of the application.
  static constexpr int quietPeriods = 20;
  /// So many pieces wake a thread at once after one was found to last.
  static constexpr int piecesAfterOneThatLasts = 64;

  const Runner run_;
  Poller poller_;

  std::mutex mutex_;
  std::array<Queue, 2> queues_;
  WorkKind lastKind_ = WorkKind::application;
  int piecesSincePoll_ = 0;
  bool isPolling_ = false;
  bool isWakeUpSent_ = false;
  bool isStopped_ = false;

  /// Changed under the mutex.
  std::atomic<int> serving_{0};
  Parked* parked_ = nullptr;
  int parkedCount_ = 0;

  bool wantsRelief_ = false;
  bool hasRelief_ = false;
  std::uint64_t leaves_ = 0;
  std::uint64_t leavesSeen_ = 0;
  int quietPeriods_ = 0;
  int piecesToHandOver_ = 0;

  /// Locked before `mutex_` where both are.
  std::mutex timersMutex_;
  TimerQueue timers_;
  /// Until when the polling thread sleeps; 0 while none does.
  std::uint64_t sleepsUntil_ = 0;
  /// The deadline for which a sleep was cut short. Later sleeps end then too, also if the timer has been disarmed, so
  /// that timers which are armed and disarmed over and over interrupt once and not each time.
  std::uint64_t interruptedFor_ = noDeadline;

  std::mutex descriptorsMutex_;
  std::unordered_map<std::uint64_t, WatchedDescriptor*> descriptors_;
  std::uint64_t lastKey_ = 0;
};

}  // namespace ormel::detail
