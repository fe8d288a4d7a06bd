#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/Concurrency/SimulatedScheduler.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "Support/InMemoryServer.h"

namespace ormel::testing {

/// How the server behaves in one schedule.
struct ServerPlan {
  enum class Reply {
    give,
    refuse,
    withhold,
    /// Replies in the same moment in which the request times out.
    giveAtTimeout,
  };
  enum class ProbeReply { inProgress, completed, failed, interrupted, turnMissing, otherThread, garbage };
  enum class Fault {
    malformedLine,
    /// A notification that lacks what it must have.
    faultyNotification,
    /// The line is the last.
    exit,
    /// The line is lost.
    exitInstead,
    exitWithinTheLine,
    /// Somebody else holds the pipes for a while, or until the client closes them.
    exitWithPipesHeld,
    endOfFile,
    endOfFileThenExit,
    inputBreaks,
  };

  ServerPlan() {}

  /// By method; what is not named is given.
  std::map<std::string, Reply> replies;
  bool completesTurns = true;
  /// No status at all if it is empty.
  std::string turnStatus = "completed";
  bool tellsOfForeignTurns = false;
  /// Says more of each turn, and of others, than its start, its items and its end.
  bool isTalkative = false;
  /// Says some of its responses again.
  bool repeatsResponses = false;
  /// So many starts of other turns come before the response that names the turn.
  std::size_t foreignStartsAhead = 0;
  bool asksForApproval = false;
  /// The end of the turn comes with the answer to a probe, before or after it.
  bool endsTurnWhenProbed = false;
  /// Further lines of a turn, which come anywhere in its course and after it.
  std::function<std::vector<JSONValue>(const std::string& threadID, const std::string& turnID)> asks;
  /// How many turns it completes, if it completes turns.
  std::size_t turnsToComplete = 1000;
  bool exitsAfterTurn = false;
  bool endsInterruptedTurns = true;
  bool holdsSteersUntilTurnEnds = false;
  bool ignoresTermination = false;
  std::vector<ProbeReply> probeReplies;
  std::optional<Fault> fault;
  /// Counts the lines of all processes together.
  std::size_t faultAtLine = 0;
  /// The fault comes with the response to a request of this method instead, once.
  std::string faultAtResponseTo;
  bool explainsFault = false;
};

/// A server that plays turns by a plan. The response that names a turn comes anywhere among the turn's notifications.
/// All ids that it makes end in "@" and the number of its process, so that whatever a client does with them shows where
/// they came from.
class CampaignServer {
 public:
  /// How many items a turn completes.
  static constexpr int itemsOfTurn = 2;
  /// The context window of a foreign turn, by which its start is known.
  static constexpr int foreignWindow = 666;
  static constexpr const char* foreignError = "foreign";
  static constexpr const char* explanation = "the server says why";

  explicit CampaignServer(SimulatedScheduler& scheduler) noexcept : scheduler_(scheduler) {}

  InMemoryServerScript script();

  /// Whether it has told the reason of its end on standard error.
  bool hasExplained(int process) const { return explained_.count(process) != 0; }

  /// Called for a line that no run can take, with how its failure begins.
  std::function<void(const InMemoryProcess&, std::string_view failure)> onBrokenLine;
  /// Called when a request has been read, before anything is done about it.
  std::function<void(const std::string& method)> onRequest;
  /// Called when the fault of the plan happens.
  std::function<void()> onFault;

  /// The ids that the process has named last; empty before it has.
  std::string threadNamedBy(const InMemoryProcess& process) const;
  std::string turnNamedBy(const InMemoryProcess& process) const;

  ServerPlan plan;

 private:
  struct Conversation {
    std::string threadID;
    std::string turnID;
    std::deque<JSONValue> course;
    bool isUnderWay = false;
    std::vector<JSONValue> heldSteers;
  };

  void read(InMemoryProcess& process, const JSONValue& message);
  void enterThread(InMemoryProcess& process, const JSONValue& request, std::string threadID);
  void beginTurn(InMemoryProcess& process, const JSONValue& request, bool isCompaction);
  JSONValue turnResponse(InMemoryProcess& process, const JSONValue& request, bool isCompaction);
  void addForeignTurns(std::deque<JSONValue>& course, const Conversation& of, bool isCompaction);
  void addWords(const InMemoryProcess& process, std::deque<JSONValue>& course, bool isCompaction);
  void addRepetition(std::deque<JSONValue>& course);
  JSONValue endOfTurn(const Conversation& of);
  void advance(InMemoryProcess& process);
  void endTurn(InMemoryProcess& process);
  void interrupt(InMemoryProcess& process, const JSONValue& request);
  void steer(InMemoryProcess& process, const JSONValue& request);
  JSONValue probed(const JSONValue& request);
  void reply(InMemoryProcess& process, const JSONValue& request, const JSONValue& result);
  void say(InMemoryProcess& process, const JSONValue& message);
  void fail(InMemoryProcess& process, const JSONValue& message);
  void breakLine(InMemoryProcess& process);
  void cutLine(InMemoryProcess& process, const JSONValue& message);
  void insert(std::deque<JSONValue>& course, JSONValue line);
  std::string stamped(const char* kind, const InMemoryProcess& process);

  SimulatedScheduler& scheduler_;
  std::map<int, Conversation> conversations_;
  std::set<int> explained_;
  std::vector<JSONValue> responses_;
  std::size_t linesSaid_ = 0;
  std::size_t turnsCompleted_ = 0;
  std::size_t probesAnswered_ = 0;
  int idsMade_ = 0;
};

}  // namespace ormel::testing
