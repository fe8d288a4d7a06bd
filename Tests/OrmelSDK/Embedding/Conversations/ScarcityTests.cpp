#include <errno.h>
#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <set>
#include <string>

#include "OrmelSDK/Embedding/EmbeddedServer.h"
#include "OrmelSDK/Platform/FailureInjection.h"
#include "Support/Eventually.h"
#include "Support/ProcessResources.h"

namespace ormel {
namespace {

using detail::failureInjector;
using detail::SystemCall;
using testing::embeddedTurn;
using testing::embeddedTurnEnds;
using testing::optionsFor;
using testing::ProcessResources;
using testing::SimulatorScenario;

std::atomic<int> callsBeforeFailure{0};
std::atomic<bool> isForGood{false};
std::atomic<bool> hasFailed{false};
std::atomic<SystemCall> failedCall{};

std::atomic<int> began{0};

int failInTurn(SystemCall call) {
  const int left = callsBeforeFailure.fetch_sub(1);
  if (left > 0 || (left < 0 && !isForGood)) return 0;
  hasFailed = true;
  failedCall = call;
  return call == SystemCall::startThread ? EAGAIN : EMFILE;
}

/// While it exists, the call of this number fails, and with `forGood` each one after it.
class Scarcity {
 public:
  Scarcity(int callsBefore, bool forGood) {
    callsBeforeFailure = callsBefore;
    isForGood = forGood;
    hasFailed = false;
    failureInjector = &failInTurn;
  }
  Scarcity(const Scarcity&) = delete;
  Scarcity& operator=(const Scarcity&) = delete;
  ~Scarcity() { failureInjector = nullptr; }
};

const std::string turnWithApproval = embeddedTurn + std::string(testing::asksForApproval) +
                                     " expecting {\"decision\": \"decline\"}\n" + embeddedTurnEnds;

/// A start, a turn with a handler and a release; the library's own error if there was one.
std::optional<std::string> errorOfWholeLife() {
  const SimulatorScenario scenario(turnWithApproval);
  OrmelOptions options = optionsFor(scenario);
  options.executableTrustAssessment = [](const std::string&) { return OrmelExecutableTrustAssessment::trusted(); };
  auto thread = Ormel(options).startThread(testing::whenAskedForApproval([] {}));
  try {
    thread.run("go").get();
  } catch (const Error& error) {
    return error.description();
  }
  return std::nullopt;
}

/// Lets each call fail in turn, until a life makes fewer calls than are let through.
void letEachCallFail(bool forGood) {
  std::set<SystemCall> failed;
  std::optional<ProcessResources> before;
  for (int callsBefore = 0;; ++callsBefore) {
    SCOPED_TRACE("after " + std::to_string(callsBefore) + " calls");
    ASSERT_LT(callsBefore, 200);
    std::optional<std::string> error;
    {
      const Scarcity scarcity(callsBefore, forGood);
      error = errorOfWholeLife();
    }
    if (!hasFailed) break;
    failed.insert(failedCall);
    if (error) EXPECT_NE(*error, "");
    EXPECT_EQ(errorOfWholeLife(), std::nullopt) << "after: " << error.value_or("success");
    if (!before) before = ProcessResources::now();
    EXPECT_TRUE(testing::eventually([&] { return ProcessResources::now().isNoMoreThan(*before); }));
  }
  const std::set<SystemCall> needed = {SystemCall::startThread, SystemCall::makePipe, SystemCall::duplicate,
                                       SystemCall::watch,       SystemCall::spawn,    SystemCall::openPidfd};
  for (const SystemCall call : needed) {
    EXPECT_EQ(failed.count(call), forGood && call != SystemCall::startThread ? failed.count(call) : 1U)
        << static_cast<int>(call);
  }
}

TEST(Scarcity, OfOneCallIsAnErrorOrASuccessAndTheNextTryWorks) { letEachCallFail(false); }
TEST(Scarcity, FromOneCallOnIsAnErrorOrASuccessAndTheNextTryWorks) { letEachCallFail(true); }

TEST(Scarcity, OfThreadsAtTheFirstUseIsToldByName) {
  const SimulatorScenario scenario(embeddedTurn + embeddedTurnEnds);
  auto thread = Ormel(optionsFor(scenario)).startThread();
  for (int started = 0; started < 2; ++started) {
    const Scarcity scarcity(started == 0 ? 1 : 0, true);
    try {
      thread.run("go").get();
      ADD_FAILURE() << "was started without threads";
    } catch (const ResourceExhaustedError& error) {
      EXPECT_EQ(error.resource(), "threads");
      EXPECT_EQ(error.description(), "The system has no room for more threads: Resource temporarily unavailable");
    }
  }
  thread.run("go").get();
}

TEST(Scarcity, OfThreadsForHandlersHasThemTakeTurns) {
  constexpr int asked = 8;
  std::string asking = embeddedTurn;
  for (int count = 0; count < asked; ++count) asking += std::string(testing::asksForApproval) + "\n";
  for (int count = 0; count < asked; ++count) asking += "client answers {\"decision\": \"decline\"}\n";
  const SimulatorScenario scenario(asking + embeddedTurnEnds);
  std::atomic<bool> isOpen{false};
  began = 0;
  auto thread = Ormel(optionsFor(scenario)).startThread(testing::whenAskedForApproval([&isOpen] {
    ++began;
    EXPECT_TRUE(testing::eventually([&] { return isOpen.load(); }));
  }));
  failureInjector = [](SystemCall call) { return call == SystemCall::startThread && began > 0 ? EAGAIN : 0; };
  auto turn = thread.runStreamed("go").get();
  EXPECT_TRUE(testing::eventually([&] { return began > 0; }));
  isOpen = true;
  EXPECT_EQ(testing::told(turn.events).back(), "end");
  failureInjector = nullptr;
  EXPECT_EQ(began, asked);
  EXPECT_EQ(scenario.failures(), std::vector<std::string>());
}

}  // namespace
}  // namespace ormel
