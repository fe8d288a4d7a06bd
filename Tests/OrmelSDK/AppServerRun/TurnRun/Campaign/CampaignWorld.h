#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun.h"
#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignOracle.h"
#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignServer.h"
#include "OrmelSDK/Concurrency/SimulatedScheduler.h"
#include "Support/InMemoryServer.h"

namespace ormel::testing {

/// A promise of the run was broken.
class BrokenPromise : public Error {
 public:
  using Error::Error;
};

enum class OperationKind { turn, resumedTurn, review, compaction, fork };

/// The client's view of an operation that it started.
struct OperationRecord {
  OperationKind kind = OperationKind::turn;
  std::stop_source stop;
  bool isOver = false;
  bool wasStarted = false;
  /// How it failed, if it did: the start, or the events.
  std::optional<std::string> error;
  bool wasCancelled = false;
  bool wasAbandoned = false;
  /// The run had been released when it ended.
  bool wasReleased = false;
  /// In words.
  std::vector<std::string> events;
  int turnsEnded = 0;

  bool endedPlainly() const { return isOver && wasStarted && !error; }
};

/// The client's view of a call that joins an operation.
struct CallRecord {
  bool isOver = false;
  std::optional<std::string> error;
};

/// Looks on at what a schedule does, and says which promise was broken by `CampaignWorld::breaks`.
class CampaignObserver {
 public:
  virtual ~CampaignObserver() = default;

  virtual void serverSent(const InMemoryProcess&, const JSONValue&) {}
  /// Called within the call that writes.
  virtual void runWrote(const detail::AppServerTurnRun&, const InMemoryProcess&, const JSONValue&) {}
  /// After each step; null once the run is gone.
  virtual void stepped(const detail::AppServerTurnRun* run) = 0;
};

/// One run, its server and its clients under one seed. After each step it checks what a run promises at all times, and
/// at the end what it promises to leave behind; an oracle says what else must come of the schedule.
class CampaignWorld {
 public:
  explicit CampaignWorld(std::uint64_t seed);
  ~CampaignWorld();
  CampaignWorld(const CampaignWorld&) = delete;
  CampaignWorld& operator=(const CampaignWorld&) = delete;

  SimulatedScheduler scheduler;
  CampaignServer behaviour;
  InMemoryServer server;
  InMemoryBlockingWork blockingWork;
  detail::AppServerTurnRunConfiguration configuration;

  ServerPlan& plan() noexcept { return behaviour.plan; }
  /// Makes the application's handlers and hooks take some steps; before `open`.
  void dawdle();
  /// Takes that back.
  void hurry();
  /// A failure that begins so may end an operation at any time.
  void allowFailure(std::string_view beginning) { allowedFailures_.push_back(beginning); }
  bool mayFailWith(std::string_view text) const;
  /// The executable is one that its assessment rejects.
  void beUntrusted() noexcept { isUntrusted_ = true; }
  bool isUntrusted() const noexcept { return isUntrusted_; }
  /// Makes the run, by the plan and the configuration as they are now.
  void open();
  /// Watches a run that somebody else owns; the clients of this world are not for it.
  void open(const std::shared_ptr<detail::AppServerTurnRun>& run);

  // The clients' actions; each is a task on its own, on no strand. Those that join an operation may be meant for a
  // certain one.
  OperationRecord& start(OperationKind kind, std::optional<std::uint64_t> preparedGeneration = std::nullopt);
  /// Reserves first, and starts then, with other work in between.
  OperationRecord& reserveAndStart(OperationKind kind);
  CallRecord& steer();
  CallRecord& submit(std::string itemID, std::map<std::string, std::vector<std::string>> answers);
  CallRecord& interrupt();
  CallRecord& release();
  /// Lets go of the run.
  void drop();

  OperationKind anyKind() { return static_cast<OperationKind>(scheduler.choose(5)); }
  /// One that has ended, or none.
  std::uint64_t pastGeneration() const noexcept { return highWaterMark_; }
  bool coin() { return scheduler.choose(2) == 0; }

  /// The actions of other clients: tasks on their own, and calls that join an operation.
  void launch(Task<void> task, std::stop_token stop);
  CallRecord& begin(Task<void> task, bool isSteer = false);

  /// Two operations that follow each other are over after about so many steps.
  static constexpr std::uint64_t stepsOfInterest = 70;

  /// Does it when so much time has passed.
  void after(std::chrono::nanoseconds delay, std::function<void()> action);

  /// Does it before a step that is chosen at random, once the work at hand is done at the latest.
  void atAnyStep(std::function<void()> action, std::uint64_t within = stepsOfInterest);

  /// Runs until nothing is left to do.
  void settle();
  /// Ends everything and checks that nothing is left.
  void close();

  /// Fails unless the operation did not fail, or one of the texts begins its failure.
  void requireErrors(const OperationRecord& record, const std::vector<std::string_view>& allowed) const;
  void require(bool holds, std::string_view promise) const;
  /// For where an exception cannot leave: fails the next step.
  void breaks(std::string_view promise);

  /// Has somebody look on, from `open` on; nobody if null.
  void observeBy(CampaignObserver* observer) noexcept { observer_ = observer; }
  CampaignObserver* observer() const noexcept { return observer_; }

  bool hasRun() const noexcept { return !weakRun_.expired(); }
  /// The run is about to be closed: then it may hold its process a while longer.
  void beClosed() noexcept { isClosed_ = true; }

  /// Adds to the trace.
  void mix(std::uint64_t value) noexcept;
  void mix(std::string_view text) noexcept;
  /// Differs, as good as surely, between two schedules that differ anywhere.
  std::uint64_t trace() const noexcept { return trace_; }

  const std::vector<std::unique_ptr<OperationRecord>>& operations() const noexcept { return operations_; }

 private:
  struct PlannedAction {
    std::uint64_t step;
    std::function<void()> action;
  };

  using Run = detail::AppServerTurnRun;

  using SharedRun = std::shared_ptr<Run>;

  static Task<void> operate(CampaignWorld& world, OperationRecord& record, SharedRun run,
                            std::optional<std::uint64_t> preparedGeneration, bool reserves);
  // These enter the strand first, so that the oracle knows when the run gets the call.
  static Task<std::uint64_t> reserveOnStrand(CampaignWorld& world, OperationRecord& record, SharedRun run);
  static Task<detail::StartedOperation> startOnStrand(CampaignWorld& world, OperationRecord& record, SharedRun run,
                                                      std::optional<std::uint64_t> preparedGeneration);
  using Expected = std::optional<std::uint64_t>;
  /// The operation that a call is meant for: none in particular, one of the past, or the present or next one.
  Expected anyExpectation();
  static Task<void> steerOnStrand(CampaignWorld& world, CallRecord& record, SharedRun run, std::string text,
                                  Expected expected);
  static Task<void> submitOnStrand(CampaignWorld& world, CallRecord& record, SharedRun run, std::string itemID,
                                   std::map<std::string, std::vector<std::string>> answers, Expected expected);
  static Task<void> interruptOnStrand(CampaignWorld& world, CallRecord& record, SharedRun run, Expected expected);
  static Task<void> releaseOnStrand(CampaignWorld& world, CallRecord& record, SharedRun run);
  static detail::OperationRequest requestOf(OperationKind kind);
  static Task<void> call(CampaignWorld& world, CallRecord& record, Task<void> task, bool isSteer);
  CallRecord& newCall() { return *calls_.emplace_back(std::make_unique<CallRecord>()); }
  CallRecord& launchCall(CallRecord& record, Task<void> task, bool isSteer = false);
  OperationRecord& startOperation(OperationKind kind, std::optional<std::uint64_t> preparedGeneration, bool reserves);

  void note(OperationRecord& record, const ThreadEvent& event);
  void noteWrite(InMemoryProcess& process, const std::string& line);
  void checkHandshake(const InMemoryProcess& process, std::string_view method);
  void checkAddress(const InMemoryProcess& process, const JSONValue& params, std::string_view method);
  void checkScope(const InMemoryProcess& process, const JSONValue& message, std::string_view method);
  void afterStep();
  void checkRun(const Run& run);
  void checkEndOfOperation(const Run& run) const;
  void checkOperation(const OperationRecord& record) const;
  void checkNothingIsLeft() const;

  CampaignObserver* observer_ = nullptr;
  std::optional<CampaignOracle> oracle_;
  std::shared_ptr<Run> run_;
  std::weak_ptr<Run> weakRun_;
  std::vector<std::unique_ptr<OperationRecord>> operations_;
  std::vector<std::unique_ptr<CallRecord>> calls_;
  std::vector<PlannedAction> actions_;
  std::vector<Timer> timers_;
  std::size_t tasksBegun_ = 0;
  std::size_t tasksEnded_ = 0;
  std::size_t steersUnderWay_ = 0;
  bool isReleased_ = false;
  bool isDropped_ = false;
  bool isDawdling_ = false;
  bool isUntrusted_ = false;
  bool isClosed_ = false;
  std::vector<std::string_view> allowedFailures_;
  int steersMade_ = 0;
  std::uint64_t highWaterMark_ = 0;
  std::uint64_t transportGeneration_ = 0;
  bool wasRunning_ = false;
  /// The thread that the last "thread/resume" asked for.
  std::string resumedThreadID_;
  std::optional<std::string> broken_;
  std::uint64_t trace_ = 0xcbf29ce484222325U;
};

template <typename Choices>
auto anyOf(CampaignWorld& world, const Choices& choices) {
  return choices[world.scheduler.choose(choices.size())];
}

}  // namespace ormel::testing
