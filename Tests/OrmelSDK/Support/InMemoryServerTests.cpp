#include "Support/InMemoryServer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ormel::testing {
namespace {

/// A client that writes down what it is told.
class InMemoryServerTest : public ::testing::Test {
 protected:
  void start(InMemoryServerScript script, std::uint64_t seed = 1) {
    scheduler.emplace(seed);
    server.emplace(*scheduler, std::move(script));
    calls.clear();
    output.clear();
    child = server->launch(detail::LaunchSettings(), [this](const detail::Termination& termination) {
      EXPECT_FALSE(child->isRunning());
      calls.push_back("ended " + std::to_string(termination.status));
    });
    detail::PipeReadHandlers handlers;
    handlers.onReadStart = [this] { calls.push_back("start"); };
    handlers.onChunk = [this](const detail::ByteBuffer& chunk) {
      calls.push_back("chunk");
      output += chunk.view();
    };
    handlers.onEnd = [this] { calls.push_back("end"); };
    child->output()->start(std::move(handlers));
  }

  std::optional<SimulatedScheduler> scheduler;
  std::optional<InMemoryServer> server;
  std::unique_ptr<detail::ChildProcess> child;
  std::vector<std::string> calls;
  std::string output;
};

TEST_F(InMemoryServerTest, ReadsEachLineAsAPieceOfItsOwnAndAnswersIt) {
  InMemoryServerScript script;
  script.onMessage = [](InMemoryProcess& process, const JSONValue& message) { process.answer(message, "done"); };
  start(script);
  child->write("{\"id\":1,\"method\":\"a\"}\n{\"id\":2,\"method\":\"b\"}\n");
  EXPECT_TRUE(server->lastProcess().messagesRead().empty());
  scheduler->run();
  EXPECT_EQ(server->lastProcess().methodsRead(), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 2);
  EXPECT_EQ(server->running(), 1u);
}

TEST_F(InMemoryServerTest, TellsEachMessageThatItSendsWhileItRuns) {
  std::vector<std::string> sent;
  InMemoryServerScript script;
  script.onSend = [&sent](InMemoryProcess&, const JSONValue& message) { sent.push_back(message.encode()); };
  script.onStart = [](InMemoryProcess& process) {
    process.notify("a", JSONValue::object());
    process.write("a line\n");
    process.exit(0);
    process.notify("b", JSONValue::object());
  };
  start(script);
  scheduler->run();
  EXPECT_EQ(sent, (std::vector<std::string>{R"({"method":"a","params":{}})"}));
}

TEST_F(InMemoryServerTest, KeepsOutputInThePipeWhenItExits) {
  InMemoryServerScript script;
  script.onStart = [](InMemoryProcess& process) {
    process.write("last words");
    process.exit(3);
  };
  start(script);
  scheduler->run();
  EXPECT_EQ(output, "last words");
  EXPECT_EQ(server->running(), 0u);
  EXPECT_EQ(server->lastProcess().termination(), (detail::Termination{detail::TerminationReason::exit, 3}));
}

TEST_F(InMemoryServerTest, TellsOfItsEndBeforeOrAfterTheEndOfItsOutputAsTheSeedWillHaveIt) {
  std::set<std::string> orders;
  for (std::uint64_t seed = 1; seed <= 50; ++seed) {
    InMemoryServerScript script;
    script.onStart = [](InMemoryProcess& process) { process.exit(0); };
    start(script, seed);
    scheduler->run();
    ASSERT_EQ(calls.size(), 3u);
    orders.insert(calls.back());
  }
  EXPECT_EQ(orders, (std::set<std::string>{"end", "ended 0"}));
}

TEST_F(InMemoryServerTest, HasUnreadBytesUntilTheyAreTakenAndAnnouncesEachReadBefore) {
  InMemoryServerScript script;
  script.onStart = [](InMemoryProcess& process) { process.write("abcdefgh"); };
  start(script);
  bool sawUnreadBytes = false;
  scheduler->setStepHook([&] {
    const bool hasUnread = child->output()->hasUnreadBytes();
    sawUnreadBytes = sawUnreadBytes || hasUnread;
    const bool isTaken = sawUnreadBytes && !hasUnread;
    EXPECT_TRUE(!isTaken || (!calls.empty() && calls.front() == "start"));
  });
  scheduler->run();
  EXPECT_EQ(output, "abcdefgh");
  EXPECT_TRUE(sawUnreadBytes);
}

TEST_F(InMemoryServerTest, CutsItsOutputWhereTheSeedWillHaveIt) {
  std::set<std::size_t> pieces;
  for (std::uint64_t seed = 1; seed <= 50; ++seed) {
    InMemoryServerScript script;
    script.onStart = [](InMemoryProcess& process) { process.write("abcdefgh"); };
    start(script, seed);
    scheduler->run();
    ASSERT_EQ(output, "abcdefgh");
    pieces.insert(calls.size());
  }
  EXPECT_GT(pieces.size(), 1u);
}

TEST_F(InMemoryServerTest, EndsByASignalWhenItIsTerminatedAndMayIgnoreIt) {
  start(InMemoryServerScript());
  child->terminate();
  EXPECT_EQ(server->running(), 1u);
  scheduler->run();
  EXPECT_EQ(server->lastProcess().termination(), (detail::Termination{detail::TerminationReason::uncaughtSignal, 15}));

  InMemoryServerScript deaf;
  deaf.onTerminate = [](InMemoryProcess&) {};
  start(deaf);
  child->terminate();
  scheduler->run();
  EXPECT_EQ(server->running(), 1u);
  EXPECT_EQ(server->lastProcess().terminationSignals(), 1u);
}

TEST_F(InMemoryServerTest, SeesTheEndOfItsInputWhenTheClientLetsGo) {
  start(InMemoryServerScript());
  EXPECT_EQ(server->held(), 1u);
  EXPECT_EQ(server->read(), 1u);
  child.reset();
  EXPECT_EQ(server->held(), 0u);
  EXPECT_EQ(server->read(), 0u);
  scheduler->run();
  EXPECT_EQ(server->lastProcess().termination(), (detail::Termination{detail::TerminationReason::exit, 0}));
  EXPECT_TRUE(calls.empty());
}

TEST_F(InMemoryServerTest, TakesNoLineOnceItsInputIsBroken) {
  start(InMemoryServerScript());
  server->lastProcess().breakInput();
  EXPECT_TRUE(child->acceptsInput());
  child->write("{}\n");
  EXPECT_FALSE(child->acceptsInput());
  scheduler->run();
  EXPECT_TRUE(server->lastProcess().linesWritten().empty());
}

TEST_F(InMemoryServerTest, FailsToLaunchAsOftenAsItIsTold) {
  start(InMemoryServerScript());
  server->failLaunches(1);
  EXPECT_THROW(server->launch(detail::LaunchSettings(), {}), Error);
  EXPECT_EQ(server->started(), 1u);
  EXPECT_NE(server->launch(detail::LaunchSettings(), {}), nullptr);
  EXPECT_EQ(server->launchesTried(), 3u);
}

}  // namespace
}  // namespace ormel::testing
