#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignThreadOracle.h"
#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignWorld.h"
#include "OrmelSDK/Conversation.h"

namespace ormel::testing {

/// One `Thread` in a campaign's world, and the application that uses it. After each step it checks what a thread
/// promises at all times, at the end of each call what the call promises, and at the end that nothing is left; an
/// oracle says what else must come of each call. An observer that the world has already goes on observing.
class CampaignThread final : public CampaignObserver {
 public:
  /// Makes the thread, by the world's plan and configuration as they are now.
  explicit CampaignThread(CampaignWorld& world, std::optional<std::string> threadID = std::nullopt);
  ~CampaignThread() override;
  CampaignThread(const CampaignThread&) = delete;
  CampaignThread& operator=(const CampaignThread&) = delete;

  // The application's actions; they do nothing once it has let go of the thread.
  ThreadCallRecord& call(ThreadCallKind kind, std::optional<std::uint64_t> readsAtMost = std::nullopt);
  ThreadCallRecord& callWithin(ThreadCallKind kind, std::chrono::nanoseconds timeout);
  /// Its signal has been aborted before.
  ThreadCallRecord& callAborted(ThreadCallKind kind);
  void steer() { join(ThreadJoin::Kind::steer); }
  void interrupt() { join(ThreadJoin::Kind::interrupt); }
  void answer() { join(ThreadJoin::Kind::answer); }
  void awaitIdle() { join(ThreadJoin::Kind::idle); }
  void closeThread() { join(ThreadJoin::Kind::close); }
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
  /// Whether it has been closed, or its run is gone: no handler may be called any more.
  bool isOutOfUse() const;

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
  static Task<void> follow(CampaignThread& self, ThreadJoin& join, Task<void> joining);
  void join(ThreadJoin::Kind kind);
  Task<void> taskOf(const ThreadJoin& join) const;
  void launch(ThreadCallRecord& record);
  ThreadCallRecord& newCall(ThreadCallKind kind);
  Task<void> begin(ThreadCallRecord& record);
  void note(ThreadCallRecord& record, const ThreadEvent& event);
  void noteEnd(ThreadCallRecord& record);
  void checkID(const ThreadCallRecord& record);
  void checkTurn(const ThreadCallRecord& record) const;
  void serverSent(const InMemoryProcess& process, const JSONValue& message) override;
  void runWrote(const detail::AppServerTurnRun& run, const InMemoryProcess& process, const JSONValue& message) override;
  void stepped(const detail::AppServerTurnRun* run) override;

  CampaignWorld& world_;
  CampaignObserver* const next_;
  std::weak_ptr<detail::Conversation> conversation_;
  std::optional<CampaignThreadOracle> oracle_;
  std::optional<Thread> thread_;
  std::vector<std::unique_ptr<ThreadCallRecord>> calls_;
  std::vector<std::unique_ptr<ThreadJoin>> joins_;
  bool wasClosed_ = false;
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
