#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun.h"
#include "Support/ConcurrencySchedulers.h"
#include "Support/RunTranscript.h"
#include "Support/SimulatorScenario.h"

namespace ormel::testing {

/// The beginning of most scenarios: a server that shakes hands and knows every thread; a new one is "t1".
inline const std::string politeServer = R"(
always ignore initialized
always answer initialize with {}
always answer thread/start with {"thread": {"id": "t1"}}
always answer thread/resume {"threadId": "$string:resumed"} with {"thread": {"id": "$resumed"}}
)";

/// The beginning of a turn.
inline constexpr const char* turnIsAccepted = R"(
client asks turn/start
server answers {"turn": {"id": "u1"}}
)";

/// Its end.
inline constexpr const char* turnCompletes = R"(
server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}
)";

/// The statements that make one turn, "u1" of "t1", run to its good end.
inline constexpr const char* wholeTurn = R"(
client asks turn/start
server answers {"turn": {"id": "u1"}}
server notifies turn/started {"threadId": "t1", "turn": {"id": "u1"}}
server notifies turn/completed {"threadId": "t1", "turn": {"id": "u1", "status": "completed"}}
)";

/// A run of the engine on the library's threads, and the real simulator behind real pipes.
///
///     TurnRunHarness server(politeServer + wholeTurn);
///     auto turn = server.startTurn();
///     EXPECT_THAT(told(turn.events), ElementsAre("thread.started", "turn.started", "turn.completed", "end"));
///
/// Each wait gives up after a generous time. At its end the harness releases the run and fails the test if the client
/// went against the scenario.
class TurnRunHarness {
 public:
  using Run = detail::AppServerTurnRun;

  /// The settings that a test may change before the run is made.
  struct Settings {
    Settings() {}

    ThreadOptions threadOptions;
    OrmelOptions ormelOptions;
    detail::RunDurations durations;
    /// The server that takes the simulator's place.
    std::optional<std::string> executable;
    /// The scheduler that takes the place of the library's. It outlives the harness.
    Scheduler* scheduler = &productionScheduler();
  };

  explicit TurnRunHarness(std::string_view scenario, const Settings& settings = Settings())
      : scenario_(scenario), run_(Run::create(configuration(settings), services(settings))) {}
  TurnRunHarness(const TurnRunHarness&) = delete;
  TurnRunHarness& operator=(const TurnRunHarness&) = delete;
  ~TurnRunHarness() {
    if (run_) ended(run_->release());
    for (const std::string& failure : scenario_.failures()) ADD_FAILURE() << failure;
  }

  Run& run() { return *run_; }
  const SimulatorScenario& scenario() const { return scenario_; }

  /// Drops the run, as an owner does that goes away without a word.
  void dropRun() { run_.reset(); }

  /// Runs the task to its end. Throws what it fails with.
  template <typename T>
  static T ended(Task<T> task) {
    return Production().run(std::move(task));
  }

  /// Starts the task, whose end `taken` gives.
  template <typename T>
  static std::shared_ptr<Outcome<T>> started(Task<T> task, std::stop_token token = {}) {
    return startOn(productionScheduler(), std::move(task), std::move(token));
  }

  template <typename T>
  static T taken(const std::shared_ptr<Outcome<T>>& outcome) {
    outcome->waitUntilSet();
    return outcome->take();
  }

  /// The look of the run at this moment, seen from its strand.
  template <typename Seen>
  Seen seen(std::function<Seen(const Run&)> look) const {
    return ended(looked<Seen>(run_, std::move(look)));
  }
  /// How the operation of the run is doing: "pending", "finished" or "failed".
  std::string state() const {
    return seen<std::string>([](const Run& run) { return stateOf(run.stream().streamCompletion()); });
  }
  bool hasProcess() const {
    return seen<bool>([](const Run& run) { return run.transport().hasProcess(); });
  }
  std::size_t requestsInFlight() const {
    return seen<std::size_t>([](const Run& run) { return run.requests().count(); });
  }
  std::uint64_t activity() const {
    return seen<std::uint64_t>([](const Run& run) { return run.protocolActivityGeneration(); });
  }

  detail::StartedOperation startTurn(std::optional<std::string> existingThreadID = std::nullopt) {
    return ended(run_->start(OperationRequest::turn(std::move(existingThreadID), "hello", TurnOptions())));
  }
  std::shared_ptr<Outcome<detail::StartedOperation>> beginTurn(std::stop_token token = {}) {
    return started(run_->start(OperationRequest::turn(std::nullopt, "hello", TurnOptions())), std::move(token));
  }
  EventChannel<ThreadEvent> startReview() {
    return eventsOf(OperationRequest::review("t1", ReviewTarget::uncommittedChanges(), ReviewDelivery::inline_));
  }

  EventChannel<ThreadEvent> startCompaction() { return eventsOf(OperationRequest::compaction("t1")); }
  EventChannel<ThreadEvent> startForkTurn() {
    return eventsOf(OperationRequest::ephemeralForkTurn("t1", "hello", "be brief", TurnOptions()));
  }
  void steer() { ended(run_->steer("more", TurnOptions())); }

  /// The methods of what the simulator has received, over all processes, in order.
  std::vector<std::string> methodsReceived() const { return scenario_.methodsReceived(); }
  bool waitForMethod(std::string_view method) const { return scenario_.waitForMethod(method); }
  std::size_t processesStarted() const { return scenario_.processesStarted(); }

 private:
  using OperationRequest = detail::OperationRequest;

  EventChannel<ThreadEvent> eventsOf(OperationRequest request) { return ended(run_->start(std::move(request))).events; }

  template <typename Seen>
  static Task<Seen> looked(std::shared_ptr<Run> run, std::function<Seen(const Run&)> look) {
    co_await run->strand().enter();
    co_return look(*run);
  }

  static std::string stateOf(const detail::StreamCompletion& completion) {
    switch (completion.kind()) {
      case detail::StreamCompletion::Kind::pending:
        return "pending";
      case detail::StreamCompletion::Kind::finished:
        return "finished";
      case detail::StreamCompletion::Kind::failed:
        break;
    }
    return "failed";
  }

  static detail::ServerServices services(const Settings& settings) {
    detail::ServerServices services;
    services.scheduler = settings.scheduler;
    return services;
  }

  detail::AppServerTurnRunConfiguration configuration(const Settings& settings) const {
    detail::AppServerTurnRunConfiguration configuration;
    configuration.executablePath = settings.executable.value_or(SimulatorScenario::executable());
    configuration.ormelOptions = settings.ormelOptions;
    configuration.ormelOptions.selectedOrmelPathOverride = true;
    configuration.ormelOptions.env = scenario_.wholeEnvironment();
    configuration.threadOptions = settings.threadOptions;
    configuration.durations = settings.durations;
    return configuration;
  }

  SimulatorScenario scenario_;
  std::shared_ptr<Run> run_;
};

}  // namespace ormel::testing
