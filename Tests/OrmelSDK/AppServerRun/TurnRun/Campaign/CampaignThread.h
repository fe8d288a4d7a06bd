#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignWorld.h"
#include "OrmelSDK/Conversation.h"
#include "OrmelSDK/Options/AbortSignal.h"

namespace ormel::testing {

/// How an application keeps a thread busy.
enum class ThreadCallKind { run, turn, review, compaction, side };

/// The application's view of such a call.
struct ThreadCallRecord {
  ThreadCallKind kind = ThreadCallKind::run;
  AbortController controller;
  std::stop_source stop;
  std::optional<std::string> idBefore;
  /// No other call was under way at any time between its begin and its end.
  bool wasAlone = true;
  bool isOver = false;
  /// The start succeeded.
  bool wasAccepted = false;
  /// The reader went away after so many events.
  std::optional<std::uint64_t> readsAtMost;
  bool wasLeftUnread = false;
  std::optional<std::string> error;
  bool wasCancelled = false;
  std::vector<std::string> threadsStarted;
  int itemsCompleted = 0;
  int turnsEnded = 0;
  std::optional<Turn> turn;

  bool isOfMainThread() const { return kind == ThreadCallKind::run || kind == ThreadCallKind::turn; }
  bool endedPlainly() const { return isOver && wasAccepted && !error && !wasLeftUnread; }
};

/// One `Thread` in a campaign's world, and the application that uses it. After each step it checks what a thread
/// promises at all times, at the end of each call what the call promises, and at the end that nothing is left.
class CampaignThread final : public CampaignObserver {
 public:
  /// Makes the thread, by the world's plan and configuration as they are now.
  explicit CampaignThread(CampaignWorld& world, std::optional<std::string> threadID = std::nullopt);
  ~CampaignThread() override;
  CampaignThread(const CampaignThread&) = delete;
  CampaignThread& operator=(const CampaignThread&) = delete;

  // The application's actions; they do nothing once it has let go of the thread.
  ThreadCallRecord& call(ThreadCallKind kind, std::optional<std::uint64_t> readsAtMost = std::nullopt);
  CallRecord& steer();
  CallRecord& interrupt();
  CallRecord& answer();
  void drop() { thread_.reset(); }

  ThreadCallKind anyKind() { return static_cast<ThreadCallKind>(world_.scheduler.choose(5)); }
  ThreadCallKind anyKindOfItsOwnThread() { return static_cast<ThreadCallKind>(2 + world_.scheduler.choose(3)); }

  /// As that of the world, within the steps that two calls take.
  void atAnyStep(std::function<void()> action);

  /// Runs until nothing is left to do, when all calls are over.
  void settle();
  /// Lets go of the thread and checks that nothing is left.
  void close();

  std::optional<std::string> id() const;
  bool isBusy() const;

  void requireErrors(const ThreadCallRecord& record, const std::vector<std::string_view>& allowed) const;
  /// Requires that the call ended as if nothing disturbed it; only a compaction can learn of its end before it has
  /// started.
  void requirePlainEnd(const ThreadCallRecord& record) const;

  const std::vector<std::unique_ptr<ThreadCallRecord>>& calls() const noexcept { return calls_; }

 private:
  static Task<void> follow(CampaignThread& self, ThreadCallRecord& record, Task<StreamedTurn> starting);
  static Task<void> read(CampaignThread& self, ThreadCallRecord& record, StreamedTurn streamed);
  static Task<void> wait(CampaignThread& self, ThreadCallRecord& record, Task<Turn> running);
  static Task<void> noteOutcome(CampaignThread& self, ThreadCallRecord& record, Task<void> application);
  Task<void> begin(ThreadCallRecord& record);
  void note(ThreadCallRecord& record, const ThreadEvent& event);
  void noteEnd(ThreadCallRecord& record);
  void checkID(const ThreadCallRecord& record);
  void checkTurn(const ThreadCallRecord& record) const;
  void stepped(const detail::AppServerTurnRun* run) override;

  CampaignWorld& world_;
  std::weak_ptr<detail::Conversation> conversation_;
  std::optional<Thread> thread_;
  std::vector<std::unique_ptr<ThreadCallRecord>> calls_;
  std::vector<std::unique_ptr<CallRecord>> joins_;
  std::size_t underWay_ = 0;
  /// Whether a call was under way before the present step.
  bool wasUnderWay_ = false;
  /// An operation may be under way whose call is over.
  bool mayRunUnseen_ = false;
  std::optional<std::string> lastID_;
  std::optional<std::uint64_t> lastGeneration_;
  std::uint64_t newestGeneration_ = 0;
};

}  // namespace ormel::testing
