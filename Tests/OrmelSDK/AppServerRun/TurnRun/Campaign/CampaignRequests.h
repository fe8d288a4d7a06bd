#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignWorld.h"

namespace ormel::testing {

/// How a server asks, and how the application answers.
struct RequestPlan {
  RequestPlan() {}

  /// The most requests in each turn.
  std::size_t asks = 4;
  /// Several requests may have one id.
  bool sharesIDs = false;
  /// The server may move on before it is answered.
  bool resolves = false;
  /// The user is asked questions too.
  bool asksTheUser = false;
  /// Tokens are asked for too, which cannot be refused.
  bool asksForTokens = false;
  bool asksWhatIsUnknown = false;
  bool handlersFail = false;
};

/// The requests of a server in one schedule, and the application's handlers. It knows of each request when the run took
/// it, by the count of the lines that the run has taken, and of each answer which request it is for.
///
/// After every step it checks these promises: a request is answered at most once; only while the operation goes on that
/// was current when the run took the request, and in the process that asked; not once the server has moved on or has
/// asked again under the same id; what is unknown is refused once; and a handler that nobody waits for has been told to
/// stop.
///
/// *Object lifetimes*: the world outlives it, and it outlives what the world plays.
class CampaignRequests final : public CampaignObserver {
 public:
  /// Installs the handlers and the server's lines; before `CampaignWorld::open`.
  CampaignRequests(CampaignWorld& world, const RequestPlan& plan);
  CampaignRequests(const CampaignRequests&) = delete;
  CampaignRequests& operator=(const CampaignRequests&) = delete;
  ~CampaignRequests() override { world_.observeBy(nullptr); }

  /// No handler may be called once this holds.
  void serveUnless(std::function<bool()> isOutOfUse) { isOutOfUse_ = std::move(isOutOfUse); }

  /// Answers one of the questions that the user was asked, or will be.
  void submit();

  /// Once all is over: whoever submitted was told how it went, and one answer was written for each success.
  void checkSubmissions() const;

  void serverSent(const InMemoryProcess& process, const JSONValue& message) override;
  void runWrote(const detail::AppServerTurnRun& run, const InMemoryProcess& process, const JSONValue& message) override;
  void stepped(const detail::AppServerTurnRun* run) override;

 private:
  enum class Kind { handled, user, unknown, resolution };

  struct Request {
    Kind kind = Kind::handled;
    JSONValue id;
    /// The text that an answer which is more than a refusal has in it; one of an attestation has none.
    std::string name;
    bool isOfAttestation = false;
    std::string itemID;
    int process = 0;
    /// Its place among those that the run has taken; 0 until then.
    std::size_t takenAs = 0;
    /// The operation that was current then.
    std::optional<std::uint64_t> takenIn;
    bool isOvertaken = false;
    bool isAnswered = false;
  };

  struct Serving {
    std::stop_token stop;
    bool isOver = false;
  };

  std::vector<JSONValue> linesOf(const std::string& threadID, const std::string& turnID);
  JSONValue ask(const std::string& threadID, const std::string& turnID);
  JSONValue askTheUser(const std::string& turnID);
  JSONValue askWhatIsUnknown(const std::string& turnID);
  JSONValue resolve(const std::string& turnID);
  Request& newRequest(Kind kind, JSONValue id);
  JSONValue anID(const std::string& turnID);
  void installHandlers();
  Task<void> takeTime(std::string name);
  void checkClosedAnswer(const Request& request, const JSONValue& result);
  void take(Request& request, std::optional<std::uint64_t> operationGeneration);
  void forgetTaken(const InMemoryProcess& process);
  void checkRefusal(const InMemoryProcess& process, const std::string& id);
  void checkAnswer(const detail::AppServerTurnRun& run, const InMemoryProcess& process, const std::string& id,
                   const JSONValue& result);
  Request* newestTaken(int process, const std::string& id);

  CampaignWorld& world_;
  const RequestPlan plan_;
  std::deque<Request> requests_;
  /// By the name that a line carries; the process is known once it is sent.
  std::map<std::string, Request*, std::less<>> byName_;
  /// By process, what each line is; null for what is no request.
  std::map<int, std::vector<Request*>> lines_;
  std::vector<std::shared_ptr<Serving>> servings_;
  std::vector<std::string> itemIDs_;
  std::uint64_t transportGeneration_ = 0;
  std::uint64_t activityBefore_ = 0;
  std::size_t linesTaken_ = 0;
  std::size_t requestsTaken_ = 0;
  /// The requests whose handlers have failed, and those whose handlers have answered.
  std::set<std::string> failed_;
  std::set<std::string> served_;
  std::function<bool()> isOutOfUse_;
  std::vector<const CallRecord*> submissions_;
  std::size_t submissionsWritten_ = 0;
};

}  // namespace ormel::testing
