#include <errno.h>
#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <set>
#include <string>
#include <vector>

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
std::atomic<int> refused{0};

int failInTurn(SystemCall call) {
  const int left = callsBeforeFailure.fetch_sub(1);
  if (left > 0 || (left < 0 && !isForGood)) return 0;
  if (!hasFailed.exchange(true)) failedCall = call;
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

/// A start, a turn with a handler and a release; the library's own error if there was one.
std::optional<std::string> errorOfWholeLife() {
  const SimulatorScenario scenario(testing::embeddedTurnWithApproval);
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
  ASSERT_EQ(errorOfWholeLife(), std::nullopt);
  std::set<SystemCall> failed;
  const auto before = ProcessResources::now();
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
    EXPECT_NE(error, std::optional<std::string>(""));
    EXPECT_EQ(errorOfWholeLife(), std::nullopt) << "after: " << error.value_or("success");
    EXPECT_TRUE(testing::eventually([&] { return ProcessResources::now().isNoMoreThan(before); }));
  }
  // Whether a thread is started depends on how many pieces of the application run at once.
  failed.insert(SystemCall::startThread);
  const std::set<SystemCall> all = {SystemCall::startThread, SystemCall::makePipe, SystemCall::duplicate,
                                    SystemCall::watch,       SystemCall::spawn,    SystemCall::openPidfd};
  EXPECT_EQ(failed, all);
}

TEST(Scarcity, OfOneCallIsAnErrorOrASuccessAndTheNextTryWorks) { letEachCallFail(false); }
TEST(Scarcity, FromOneCallOnIsAnErrorOrASuccessAndTheNextTryWorks) { letEachCallFail(true); }

/// The failure of the first use when the call of this number fails, and each one after it.
std::string failureOfFirstUse(Thread& thread, int callsBefore) {
  const Scarcity scarcity(callsBefore, true);
  try {
    thread.run("go").get();
  } catch (const ResourceExhaustedError& error) {
    return error.resource() + ": " + error.description();
  }
  return "none";
}

TEST(Scarcity, AtTheFirstUseIsToldByNameAndTheNextTryWorks) {
  const SimulatorScenario scenario(embeddedTurn + embeddedTurnEnds);
  auto thread = Ormel(optionsFor(scenario)).startThread();
  const std::string threads = "threads: The system has no room for more threads: Resource temporarily unavailable";
  EXPECT_EQ(failureOfFirstUse(thread, 0),
            "descriptors: The system has no room for more descriptors: Too many open files");
  EXPECT_EQ(failureOfFirstUse(thread, 1), threads);
  EXPECT_EQ(failureOfFirstUse(thread, 1), threads);
  EXPECT_EQ(failureOfFirstUse(thread, 0), threads);
  thread.run("go").get();
}

TEST(Scarcity, OfThreadsForHandlersHasThemTakeTurns) {
  constexpr int asked = 8;
  std::string asking = embeddedTurn;
  std::string answers = "in any order\n";
  for (int count = 0; count < asked; ++count) {
    const std::string name = "request" + std::to_string(count);
    asking += testing::asksForApproval + (" as " + name) + "\n";
    answers += "client answers " + name + " {\"decision\": \"decline\"}\n";
  }
  asking += answers + "end\n";
  const SimulatorScenario scenario(asking + embeddedTurnEnds);
  began = 0;
  refused = 0;
  auto thread = Ormel(optionsFor(scenario)).startThread(testing::whenAskedForApproval([] {
    // Each one holds its thread until others have had to wait.
    EXPECT_TRUE(++began == asked || testing::eventually([] { return refused >= 2; }));
  }));
  failureInjector = [](SystemCall call) {
    const bool isRefused = call == SystemCall::startThread && began > 0;
    if (isRefused) ++refused;
    return isRefused ? EAGAIN : 0;
  };
  auto turn = thread.runStreamed("go").get();
  EXPECT_EQ(testing::told(turn.events).back(), "end");
  failureInjector = nullptr;
  EXPECT_EQ(began, asked);
  EXPECT_EQ(scenario.failures(), std::vector<std::string>());
}

}  // namespace
}  // namespace ormel
