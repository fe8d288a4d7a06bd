#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "OrmelSDK/AppServerRun/Launch/OrmelBinaryLocator.h"
#include "Support/ProcessResources.h"
#include "Support/TemporaryDirectory.h"
#include "Support/ThreadHarness.h"
#include "Support/TurnRunHarness.h"

namespace {

using namespace ormel;
using namespace ormel::testing;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

TEST(OrmelThreads, NeedAnExecutableOnlyForTheirFirstTurn) {
  // The servers of earlier tests may still be ending.
  ASSERT_TRUE(eventually([] { return !ProcessResources::now().hasChildren; }));
  const TemporaryDirectory folder;
  const std::string gone = folder.addExecutable("server");
  OrmelOptions options;
  options.ormelPathOverride = gone;
  const Ormel ormel(options);
  std::filesystem::remove(gone);
  const Thread thread = ormel.startThread();
  const Thread resumed = ormel.resumeThread("t1");
  EXPECT_FALSE(ProcessResources::now().hasChildren);
  EXPECT_THAT(failureOf([&] { thread.run("hello").get(); }), HasSubstr(gone));
  EXPECT_THAT(failureOf([&] { resumed.run("hello").get(); }), HasSubstr(gone));
  EXPECT_EQ(thread.id(), std::nullopt);
  EXPECT_EQ(resumed.id(), "t1");
}

TEST(OrmelThreads, AreStartedAndResumedWithTheirOptions) {
  const SimulatorScenario scenario(R"(
    always ignore initialized
    always answer initialize with {}
    client asks thread/start {"model": "big"}
    server answers {"thread": {"id": "t7"}}
    client asks turn/start {"threadId": "t7"}
    server answers {"turn": {"id": "u1"}}
    server notifies turn/completed {"turn": {"id": "u1", "status": "completed"}}
    client asks thread/resume {"threadId": "t7", "model": "big"}
    server answers {"thread": {"id": "t7"}}
    client asks turn/start {"threadId": "t7"}
    server answers {"turn": {"id": "u2"}}
    server notifies turn/completed {"turn": {"id": "u2", "status": "completed"}})");
  OrmelOptions options;
  options.ormelPathOverride = SimulatorScenario::executable();
  options.env = scenario.wholeEnvironment();
  ThreadOptions threadOptions;
  threadOptions.model = "big";
  std::optional<Thread> thread;
  // A thread does not need the facade that made it.
  thread = Ormel(options).startThread(threadOptions);
  EXPECT_FALSE(std::filesystem::exists(scenario.recordPath()));
  EXPECT_EQ(failureOf([&] { thread->run("hello").get(); }), "no failure");
  EXPECT_EQ(thread->id(), "t7");
  EXPECT_EQ(failureOf([&] { thread->run("hello").get(); }), "no failure");
  thread.reset();
  EXPECT_THAT(scenario.failures(), ::testing::IsEmpty());
}

TEST(OrmelThreads, ResumeTheThreadThatIsNamed) {
  ThreadHarness server(politeServer + wholeTurn);
  server.thread = server.ormel().resumeThread("t1");
  EXPECT_EQ(server.thread->id(), "t1");
  EXPECT_EQ(failureOf([&] { server.thread->run("hello").get(); }), "no failure");
  EXPECT_THAT(server.scenario.methodsReceived(),
              ElementsAre("initialize", "initialized", "thread/resume", "turn/start"));
}

TEST(OrmelThreads, GiveTheServerTheOptionsAndTheFoldersOfTheFacade) {
  const SimulatorScenario scenario(politeServer + wholeTurn);
  // The executable of a package, with programs of its own beside it.
  const TemporaryDirectory package;
  const std::string vendor = "vendor/" + std::string(detail::LocatorInputs::ofThisProcess().packageNames.targetTriple);
  const std::string native = package.addExecutable(
      vendor + "/bin/ormel", "#!/bin/sh\nexec '" + SimulatorScenario::executable() + "' \"$@\"\n");
  const std::string support = package.addDirectory(vendor + "/ormel-path");
  OrmelOptions options;
  options.ormelPathOverride = native;
  options.env = scenario.wholeEnvironment();
  options.apiKey = "secret";
  options.baseUrl = "http://127.0.0.1:1";
  const Ormel ormel(options);
  EXPECT_THAT(ormel.ormelPathDirectories(), ElementsAre(support));
  EXPECT_EQ(failureOf([&] { ormel.startThread().run("hello").get(); }), "no failure");
  const JSONValue start = scenario.record("start").at(0);
  const JSONValue& environment = *start.find("environment");
  EXPECT_THAT(std::string(*environment.find("PATH")->stringValue()), StartsWith(support + ":"));
  EXPECT_EQ(*environment.find("ORMEL_API_KEY"), JSONValue("6 bytes"));
  EXPECT_THAT(start.find("arguments")->encode(), HasSubstr("http://127.0.0.1:1"));
}

}  // namespace
