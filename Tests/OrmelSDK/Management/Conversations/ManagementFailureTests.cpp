#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "OrmelSDK/Records/ThreadRecords.h"
#include "Support/CallRows.h"
#include "Support/ProcessResources.h"
#include "Support/RunTranscript.h"

// Calls and sessions on real processes that go wrong in every way.
namespace {

using namespace ormel;
using namespace ormel::testing;
using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* anyThread = "always answer thread/read with {\"thread\":{\"id\":\"t1\"}}\n";

bool nothingIsLeft() {
  return eventually([] { return !ProcessResources::now().hasChildren; });
}

/// The failure of a call on a server that plays the scenario, one-shot and on a session. No child remains.
struct FailureRow {
  const char* scenario;
  const char* ofCall;
  const char* ofSession;
};

TEST(ManagementFailure, TellsWhatTheServerDid) {
  const FailureRow rows[] = {
      {"server writes stderr \"no licence\\n\"\nserver exits 3",
       "stream error: App-server RPC thread/read failed: no licence", "stream error: no licence"},
      {"server closes stdout\nwait until killed",
       "stream error: App-server RPC thread/read failed: Ormel app-server terminated unexpectedly",
       "stream error: Ormel app-server terminated unexpectedly"},
      {"client asks initialize\nserver exits 0",
       "stream error: App-server RPC thread/read failed: Ormel app-server terminated unexpectedly",
       "stream error: Ormel app-server terminated unexpectedly"},
      {"client asks initialize\nserver answers with error {\"code\":-5,\"message\":\"not today\"}",
       "other error: App-server error -5: not today", "other error: App-server error -5: not today"},
      {"client asks initialize\nserver answers {}\nclient notifies initialized\nclient asks *\n"
       "server writes stderr \"panicked\\n\"\nserver exits 1",
       "stream error: App-server RPC thread/read failed: panicked", "stream error: panicked"},
      {"client asks initialize\nserver answers {}\nclient notifies initialized\nclient asks *\n"
       "server writes raw \"[]\\n\"",
       "stream error: App-server RPC thread/read failed: Unexpected non-object JSON from app-server",
       "stream error: Unexpected non-object JSON from app-server"},
      {"client asks initialize\nserver answers {}\nclient notifies initialized\nclient asks *\n"
       "server answers {\"thread\":{\"id\":7}}",
       "stream error: App-server RPC thread/read failed: App-server decode error at thread.id: type mismatch for "
       "String: "
       "Expected String but found a number.",
       "stream error: App-server decode error at thread.id: type mismatch for String: Expected String but found a "
       "number."},
  };
  for (const FailureRow& row : rows) {
    SCOPED_TRACE(row.scenario);
    const SimulatorScenario scenario(row.scenario);
    EXPECT_EQ(failureOf([&] { ormelPlaying(scenario).readThread("t1").get(); }), row.ofCall);
    const SimulatorScenario again(row.scenario);
    const auto session = ormelPlaying(again).makeControlSession();
    EXPECT_EQ(failureOf([&] { session.unarchiveThread("t1").get(); }), row.ofSession);
    session.close().get();
    EXPECT_TRUE(nothingIsLeft());
  }
}

TEST(ManagementFailure, TellsOfAnExecutableThatIsMissing) {
  OrmelOptions options;
  const TemporaryDirectory folder;
  const std::string gone = folder.addExecutable("server");
  options.ormelPathOverride = gone;
  const Ormel ormel(options);
  std::filesystem::remove(gone);
  EXPECT_THAT(failureOf([&] { ormel.listThreads().get(); }),
              AllOf(StartsWith("stream error: App-server RPC thread/list failed: "), HasSubstr("No such file")));
  const auto session = ormel.makeControlSession();
  EXPECT_THAT(failureOf([&] { session.archiveThread("t1").get(); }), HasSubstr("No such file"));
  EXPECT_THAT(failureOf([&] { ormel.performNotification("c/d").get(); }), HasSubstr("No such file"));
  EXPECT_TRUE(nothingIsLeft());
}

TEST(ManagementFailure, TellsOfAnExecutableThatIsRejected) {
  OrmelOptions options;
  options.ormelPathOverride = SimulatorScenario::executable();
  options.executableTrustAssessment = [](const std::string&) {
    return OrmelExecutableTrustAssessment::rejected("not ours");
  };
  const Ormel ormel(options);
  const std::string rejected = inWords(std::make_exception_ptr(OrmelProcessError::untrustedExecutable("", "")));
  EXPECT_EQ(failureOf([&] { ormel.listThreads().get(); }), rejected);
  const auto session = ormel.makeControlSession();
  EXPECT_EQ(failureOf([&] { session.archiveThread("t1").get(); }), rejected);
  EXPECT_EQ(failureOf([&] { ormel.performNotification("c/d").get(); }), rejected);
  EXPECT_FALSE(ProcessResources::now().hasChildren);
}

TEST(ManagementFailure, LeavesNoChildBehindACancelledCall) {
  const SimulatorScenario scenario(std::string(handshake) + "client asks thread/read\nclient closes input\n");
  const Ormel ormel = ormelPlaying(scenario);
  std::stop_source stop;
  const auto outcome = startOn(productionScheduler(), ormel.readThread("t1"), stop.get_token());
  ASSERT_TRUE(scenario.waitForMethod("thread/read"));
  stop.request_stop();
  outcome->waitUntilSet();
  EXPECT_EQ(failureOf([&] { outcome->take(); }), "stream error: App-server RPC thread/read was cancelled");
  EXPECT_TRUE(nothingIsLeft());
}

// More than fits into the pipe, so that the call's request is still queued when it is given up.
TEST(ManagementFailure, IsNotKeptByAServerThatNeverReads) {
  const SimulatorScenario scenario(
      "client asks initialize\nserver answers {}\nserver stops reading\nwait until killed");
  const Ormel ormel = ormelPlaying(scenario);
  std::stop_source stop;
  const std::vector<JSONValue> items = {JSONValue(std::string(8'000'000, 'x'))};
  const auto outcome = startOn(productionScheduler(), ormel.injectThreadItems("t1", items), stop.get_token());
  ASSERT_TRUE(scenario.waitForMethod("initialize"));
  stop.request_stop();
  outcome->waitUntilSet();
  EXPECT_EQ(failureOf([&] { outcome->take(); }), "stream error: App-server RPC thread/inject_items was cancelled");
  EXPECT_TRUE(nothingIsLeft());
}

TEST(Management, GivesEightThreadsTheirOwnAnswersOnOneSession) {
  const SimulatorScenario scenario(std::string(handshake) + R"(
    always answer thread/unarchive {"threadId": "$string:wanted"} with {"thread": {"id": "$wanted"}}
  )");
  const auto session = ormelPlaying(scenario).makeControlSession();
  std::vector<std::thread> threads;
  std::atomic<int> right = 0;
  for (int number = 0; number < 8; ++number) {
    threads.emplace_back([&, number] {
      for (int call = 0; call < 20; ++call) {
        const std::string id = std::to_string(number) + "-" + std::to_string(call);
        if (session.unarchiveThread(id).get().thread.id == id) ++right;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(right, 160);
  EXPECT_EQ(scenario.processesStarted(), 1U);
  session.close().get();
  EXPECT_TRUE(nothingIsLeft());
}

TEST(Management, Makes32CallsAtOnceEachOnAProcessOfItsOwn) {
  const SimulatorScenario scenario(std::string(handshake) + anyThread);
  const Ormel ormel = ormelPlaying(scenario);
  ormel.readThread("t1").get();
  ASSERT_TRUE(nothingIsLeft());
  const ProcessResources before = ProcessResources::now();
  std::vector<std::shared_ptr<Outcome<ThreadReadResponse>>> calls;
  for (int number = 0; number < 32; ++number) calls.push_back(startOn(productionScheduler(), ormel.readThread("t1")));
  for (const auto& call : calls) {
    call->waitUntilSet();
    EXPECT_EQ(call->take().thread.id, "t1");
  }
  EXPECT_TRUE(eventually([&] { return ProcessResources::now().isNoMoreThan(before); }));
  EXPECT_EQ(scenario.processesStarted(), 33U);
}

TEST(Management, GoesOnWithoutTheObjectsThatStartedIt) {
  const SimulatorScenario scenario(std::string(handshake) + anyThread +
                                   "always answer thread/unarchive with {\"thread\":{\"id\":\"t2\"}}\n");
  auto call = ormelPlaying(scenario).readThread("t1");
  EXPECT_EQ(call.get().thread.id, "t1");
  auto ofSession = ormelPlaying(scenario).makeControlSession().unarchiveThread("t2");
  EXPECT_EQ(ofSession.get().thread.id, "t2");
  EXPECT_TRUE(nothingIsLeft());
}

TEST(Management, BringsTheNotificationsOfASessionToABlockingLoop) {
  const SimulatorScenario scenario(R"(
    client asks initialize
    server answers {}
    client notifies initialized
    client asks thread/archive
    server notifies thread/archived {"threadId": "t1"}
    server notifies something/else
    server answers {}
  )");
  const auto session = ormelPlaying(scenario).makeControlSession();
  auto notifications = session.notifications().get();
  session.archiveThread("t1").get();
  const auto first = notifications.nextBlocking();
  ASSERT_TRUE(first);
  EXPECT_EQ(std::get<ThreadArchivedNotification>(first->threadLifecycleNotification().value().value).threadID, "t1");
  EXPECT_EQ(notifications.nextBlocking().value().method, "something/else");
  session.close().get();
  std::size_t more = 0;
  for (const OrmelControlNotification& told : notifications) more += told.method.size();
  EXPECT_EQ(more, 0U);
}

// A session that nobody closes ends its process all the same.
TEST(Management, LeavesNothingBehind100SessionsWithACallEach) {
  const SimulatorScenario scenario(std::string(handshake) + "always answer thread/archive with {}\n");
  const Ormel ormel = ormelPlaying(scenario);
  ormel.makeControlSession().archiveThread("t1").get();
  ASSERT_TRUE(nothingIsLeft());
  const ProcessResources before = ProcessResources::now();
  for (int number = 0; number < 100; ++number) {
    const auto session = ormel.makeControlSession();
    const auto notifications = session.notifications().get();
    session.archiveThread("t1").get();
    if (number % 2 == 0) session.close().get();
  }
  EXPECT_TRUE(eventually([&] { return ProcessResources::now().isNoMoreThan(before); }));
}

TEST(Management, EndsAServerThatIgnoresTheEndOfItsInput) {
  const SimulatorScenario scenario(std::string(handshake) + "client notifies c/d {\"a\": 1}\nwait until killed");
  ormelPlaying(scenario).performNotification("c/d", JSONValue::object({{"a", 1}})).get();
  EXPECT_TRUE(nothingIsLeft());
  EXPECT_THAT(scenario.methodsReceived(), ElementsAre("initialize", "initialized", "c/d"));
}

TEST(Management, ReadsTheResultOfAnyCall) {
  const SimulatorScenario scenario = answering("x/y", R"({"a":[1]})");
  const Ormel ormel = ormelPlaying(scenario);
  EXPECT_EQ(ormel.performRPC<JSONValue>("x/y").get(), JSONValue::decode(R"({"a":[1]})"));
  EXPECT_EQ(scenario.receivedLines().back(), R"({"id":2,"method":"x/y"})");
  EXPECT_THAT(
      failureOf([&] { ormel.performRPC<ThreadReadResponse>("x/y", JSONValue()).get(); }),
      StartsWith("stream error: App-server RPC x/y failed: App-server decode error at $: missing key 'thread'"));
  EXPECT_EQ(scenario.receivedLines().back(), R"({"id":2,"method":"x/y","params":null})");
}

}  // namespace
