#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
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
  /// Part of what the call says to the server, by which it is known on the wire; a compaction says nothing.
  std::string name;
  std::optional<std::chrono::nanoseconds> timeout;
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
  std::vector<std::string> items;
  int turnsCompleted = 0;
  int turnsFailed = 0;
  std::optional<Turn> turn;

  int turnsEnded() const { return turnsCompleted + turnsFailed; }
  bool isOfMainThread() const { return kind == ThreadCallKind::run || kind == ThreadCallKind::turn; }
  bool endedPlainly() const { return isOver && wasAccepted && !error && !wasLeftUnread; }
};

/// A call that joins an operation, waits for its end, or closes the thread.
struct ThreadJoin {
  enum class Kind { steer, interrupt, answer, idle, close };

  Kind kind = Kind::steer;
  std::string name;
  bool hasBegun = false;
  /// The operation that the thread was busy with when it got the call.
  std::optional<std::uint64_t> generation;
  bool isOver = false;
  std::optional<std::string> error;
  std::size_t writes = 0;
};

/// The words by which the oracle knows an item that was completed.
std::string wordsOfItem(const JSONValue& item);

/// Says what must come of an application's calls to a `Thread`, from what the application did, from what passed on the
/// wire, and from how the run's operations ended, for which the run has an oracle of its own. A call is known on the
/// wire by its name, so that the oracle knows which operation is whose.
///
/// A call must be refused at once, or its operation is one that the run began for it: on the right thread, interrupted
/// when the call's signal, its time or an `interrupt` says so and for no other reason, and ended with the operation's
/// own outcome and with all items of the lines that the run took. Whenever time moves on, the application has seen all
/// that has happened.
///
/// A breach is told by `CampaignWorld::breaks`.
class CampaignThreadOracle {
 public:
  CampaignThreadOracle(CampaignWorld& world, std::weak_ptr<detail::Conversation> conversation)
      : world_(world), conversation_(std::move(conversation)) {}

  void serverSent(const InMemoryProcess& process, const JSONValue& message);
  void runWrote(const detail::AppServerTurnRun& run, const InMemoryProcess& process, const JSONValue& message);
  /// After each step; null once the run is gone.
  void stepped(const detail::AppServerTurnRun* run);

  // In the step in which the thread gets the call, and before it does.
  void begins(const ThreadCallRecord& call);
  void begins(ThreadJoin& join);

  // The outcomes that the application sees.
  void accepted(const ThreadCallRecord& call);
  void ended(const ThreadCallRecord& call);
  void ended(const ThreadJoin& join);

 private:
  struct End {
    End() {}

    /// Null if the operation ended plainly.
    std::optional<std::string> error;
    std::uint64_t at = 0;
  };

  struct Operation {
    std::uint64_t generation = 0;
    std::uint64_t begunAt = 0;
    const ThreadCallRecord* call = nullptr;
    std::optional<std::string> idBefore;
    /// How it entered its thread, and what the server had named before.
    std::string entry;
    std::string threadAsked;
    std::string threadBefore;
    std::string turnBefore;
    std::string threadID;
    std::string turnID;
    const InMemoryProcess* process = nullptr;
    bool hasAskedForTurn = false;
    bool wasInterrupted = false;
    std::vector<std::string> items;
    /// The status with which the server ended the turn.
    std::optional<std::string> status;
    std::optional<End> end;
  };

  struct Call {
    bool hasBegun = false;
    std::optional<std::string> refusal;
    Operation* operation = nullptr;
    std::optional<std::string> idBefore;
    std::uint64_t newestBefore = 0;
    /// Another operation was under way at some time.
    bool sawAnother = false;
  };

  void require(bool holds, const std::string& promise);
  Operation* operationOf(std::optional<std::uint64_t> generation);
  std::optional<std::uint64_t> busyWith() const;
  bool canLoseWrites() const;

  void noteNames(Operation& operation);
  void takeLines(const detail::AppServerTurnRun& run);
  void take(Operation& operation, const JSONValue& line);
  void noteEnd(const detail::AppServerTurnRun& run, Operation& operation);
  void checkID();
  void assign(Operation& operation, const std::string& method, const std::string& line);
  void noteSteer(std::uint64_t generation, const std::string& line);
  bool mayBeInterrupted(const Operation& operation) const;
  bool isStoppedBy(const ThreadCallRecord& call, const Operation& operation) const;
  bool mustBeInterrupted(const Operation& operation) const;
  void meetMoment();
  void requireNothingIsDue();
  void requireOperationIsNotDue(const Operation& operation);
  void checkRefused(const ThreadCallRecord& call, const Call& known);
  void checkWithoutOperation(const ThreadCallRecord& call, const Call& known);
  void checkOutcome(const ThreadCallRecord& call, const Operation& operation);
  std::optional<std::string> failureOfTurn(const Operation& operation) const;
  bool isStoppedOtherwise(const ThreadCallRecord& call) const;
  void checkTimeout(const ThreadCallRecord& call, const Operation& operation);
  void checkItems(const ThreadCallRecord& call, const Operation& operation);
  void checkSteer(const ThreadJoin& join);
  void checkInterrupt(const ThreadJoin& join);
  void checkAnswer(const ThreadJoin& join);
  void checkIdle(const ThreadJoin& join);
  void checkClosed(const ThreadJoin& join);

  CampaignWorld& world_;
  const std::weak_ptr<detail::Conversation> conversation_;
  std::uint64_t moment_ = 0;
  std::map<std::uint64_t, Operation> operations_;
  std::map<const ThreadCallRecord*, Call> calls_;
  std::vector<ThreadJoin*> joins_;
  std::optional<std::uint64_t> current_;
  std::optional<std::uint64_t> lastBusy_;
  std::optional<std::string> lastID_;
  bool isClosed_ = false;
  /// The process that the thread ended when it was closed; one that it had given up before is not waited for.
  const InMemoryProcess* closing_ = nullptr;

  std::map<int, std::vector<JSONValue>> lines_;
  std::uint64_t transportGeneration_ = 0;
  std::uint64_t activityBefore_ = 0;
  std::size_t linesTaken_ = 0;
};

}  // namespace ormel::testing
