#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun.h"
#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignEvents.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "Support/InMemoryServer.h"

namespace ormel::testing {

class CampaignWorld;
struct CallRecord;
struct OperationRecord;

/// Says what must come of a schedule: how each operation and each call ends, when in virtual time, and with which
/// events. It is a second run, written from the rules alone, which is told what reaches the first one: the clients'
/// calls as they enter the strand, the lines that the server sent as they are taken, the ends of processes, and time.
/// It asks the run only when something happened, never what: how many lines it has taken, and that a waiter whose
/// answer is there has gone on.
///
/// Whenever time moves on, nothing may be left that was due: no line, no waiter, no timer, no end.
///
/// A breach is told by `CampaignWorld::breaks`.
class CampaignOracle {
 public:
  explicit CampaignOracle(CampaignWorld& world) : world_(world) {}

  // The server.
  void serverSent(const InMemoryProcess& process, const JSONValue& message);
  /// A line that cannot be taken; it fails the operation with a text that begins so.
  void serverBroke(const InMemoryProcess& process, std::string_view failure);

  // The clients, on the run's strand, in the step in which the run gets the call and before it does.
  void reserving(OperationRecord& record);
  void starting(OperationRecord& record, std::optional<std::uint64_t> prepared);
  using Expected = std::optional<std::uint64_t>;
  void steering(CallRecord& record, const std::string& text, Expected expected);
  void interrupting(CallRecord& record, Expected expected);
  void submitting(CallRecord& record, const std::string& itemID, Expected expected);
  void releasing(CallRecord& record);
  void toldThread(const std::string& threadID);
  void hooked(const std::string& method, std::uint64_t operationGeneration);

  // The outcomes that the clients see.
  void ended(const OperationRecord& record);
  void ended(const CallRecord& record);

  void runWrote(const JSONValue& message);
  /// After each step; null once the run is gone.
  void stepped(const detail::AppServerTurnRun* run);
  /// Nothing is left to do, and nobody has released anything yet.
  void settled();

 private:
  enum class Phase {
    reserved,
    /// The process is being started.
    launching,
    /// The handshake is done.
    entering,
    sent,
    responded,
    /// The thread is known, and the application is about to be told.
    entered,
    inHandler,
    inHook,
    returned,
  };

  struct End {
    bool isFailure = false;
    bool isAbort = false;
    std::string text;
  };

  struct Operation {
    std::uint64_t generation = 0;
    OperationRecord* record = nullptr;
    Phase phase = Phase::reserved;
    /// The request that the start waits for, or whose response it got.
    std::string method;
    JSONValue response;
    std::optional<std::string> refusal;
    bool hasSetRoots = false;
    std::vector<std::string> events;
    std::optional<End> end;
    std::uint64_t endedAt = 0;
    std::optional<std::string> startError;
    bool isStartCancelled = false;
  };

  struct Line {
    JSONValue message;
    /// How the failure begins, if it cannot be taken.
    std::optional<std::string> failure;
    /// No operation was there to fail.
    bool mayBeTaken = false;
  };

  struct Request {
    std::string method;
    std::uint64_t generation = 0;
    std::uint64_t deadline = 0;
    const CallRecord* call = nullptr;
  };

  struct Deferred {
    JSONValue params;
    std::string turnID;
  };

  struct Probe {
    Probe() {}

    std::uint64_t at = 0;
    /// The server's activity when it was armed; two values if lines came in that very moment.
    std::uint64_t low = 0;
    std::uint64_t high = 0;
    std::string requestID;
    std::optional<JSONValue> answer;
    std::optional<std::string> refusal;
  };

  struct Interrupted {
    std::string threadID;
    std::string turnID;
  };

  struct CallExpectation {
    bool isResolved = false;
    /// The outcomes that it may have; one without a text is a success.
    std::vector<std::optional<std::string>> outcomes;
  };

  // Promises.
  void require(bool holds, const std::string& promise);
  void meetMoment();
  void requireNothingIsDue();
  void requireStartIsNotDue();
  void requireProcessIsNotDue();
  void requireProbeIsNotDue();
  void compare(const detail::AppServerTurnRun& run);

  // The operation.
  void reserve(OperationRecord& record);
  bool isCurrent(Expected expected) const;
  void emit(const std::string& event);
  void emitAll(const std::vector<std::string>& events);
  void end(End with);
  void noteStartAtEnd(Operation& operation, const End& with);
  void resolve(const CallRecord* call, std::optional<std::string> outcome);
  void dropProcess();
  void noteLaunch();
  void noteProcess();

  // The run's writes.
  void wroteInitialized();
  void wroteRequest(const std::string& method, const std::string& id, const JSONValue& params);
  void wroteStartRequest(const std::string& method, const JSONValue& params);
  const CallRecord* wroteJoin(const std::string& method, const JSONValue& params);
  void wroteProbe(const std::string& id, const JSONValue& params);
  void enterThread();
  void leaveThread();
  bool needsRoots() const;
  bool isInformedOfThread() const;

  // The server's lines.
  void takeLines(std::uint64_t activity);
  void take(const JSONValue& message);
  void takeResponse(const JSONValue& message);
  void takeStartResponse(const JSONValue& message);
  void takeInterruptResponse(bool isRefused);
  void takeRequest(const std::string& method, const JSONValue& message);
  void takeNotification(const std::string& method, const JSONValue& params);
  void takeTurnStarted(const JSONValue& params);
  void takeTurnCompleted(const JSONValue& params);
  void takeThreadStarted(const JSONValue& params);
  void defer(std::vector<Deferred>& list, const char* method, const JSONValue& params, const std::string& turnID);
  bool belongs(const JSONValue& params, const std::optional<std::string>& embeddedThreadID = std::nullopt,
               const std::optional<std::string>& embeddedTurnID = std::nullopt) const;
  void setThread(const std::string& threadID);
  void setTurn(const std::string& turnID);
  void emitTurnStarted(const JSONValue& params);
  void completeTurn(const JSONValue& turn, const std::string& turnID);
  void failByLine(const std::string& text);
  void armProbe();

  // The events between two lines.
  bool isToBeTold() const;
  std::string namedThread() const;
  bool canAdopt() const;
  void adopt();
  void explainEnd(const detail::AppServerTurnRun& run);
  bool explains(const End& actual);
  bool isStartFailure(const End& actual);
  bool isTimeout(const End& actual) const;
  bool isInterruptEnd(const End& actual) const;
  bool isProbeEnd(const End& actual);
  const JSONValue* probedTurn() const;
  bool isProbedThread() const;
  bool isStillInProgress() const;
  bool isProcessEnd(const End& actual) const;
  bool isBrokenLine(const End& actual) const;
  bool isCancellation(const End& actual);
  std::string errorText() const;
  std::deque<Line>& linesOfProcess() { return lines_[process_]; }

  CampaignWorld& world_;
  bool isOver_ = false;
  std::uint64_t moment_ = 0;
  std::uint64_t activityAtMoment_ = 0;

  std::uint64_t lastGeneration_ = 0;
  std::deque<Operation> operations_;
  Operation* current_ = nullptr;
  std::map<const OperationRecord*, Operation*> byRecord_;
  std::map<const OperationRecord*, std::string> refusedStarts_;
  std::set<const OperationRecord*> operationsOver_;
  std::map<const CallRecord*, CallExpectation> calls_;
  std::set<const CallRecord*> callsOver_;

  std::uint64_t activity_ = 0;
  std::int64_t nextID_ = 1;
  std::int64_t idsSpent_ = 0;
  std::map<std::string, Request> requests_;
  ExpectedItems items_;
  /// By item, the id of the request to answer.
  std::map<std::string, std::string> questions_;

  bool hasProcess_ = false;
  bool isInitialized_ = false;
  int process_ = 0;
  std::size_t launches_ = 0;
  std::size_t launchesTried_ = 0;
  std::optional<std::uint64_t> processEndedAt_;
  std::optional<std::uint64_t> outputClosedAt_;
  /// The run had read the output to its end before the present step.
  bool isOutputRead_ = false;
  std::map<int, std::deque<Line>> lines_;

  std::optional<std::string> thread_;
  std::optional<std::string> turn_;
  std::optional<std::string> activeThread_;
  std::optional<std::string> activeTurn_;
  bool acceptsTurnFromNotification_ = false;
  std::vector<Deferred> starts_;
  std::vector<Deferred> completions_;

  bool isAborted_ = false;
  std::optional<Interrupted> interrupted_;
  bool isInterruptRefused_ = false;
  std::optional<std::uint64_t> graceAt_;
  std::optional<Probe> probe_;

  /// The lines that the run has to write within the present step.
  std::multiset<std::string> writesDue_;
  const CallRecord* joining_ = nullptr;
  std::string joiningText_;
  /// The step in which a waiter got its response, until it goes on.
  std::optional<std::uint64_t> waiterSince_;
};

}  // namespace ormel::testing
