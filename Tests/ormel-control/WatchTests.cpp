#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <time.h>

#include <cstdint>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-control/ControlProgram.h"
#include "ormel-control/NotificationQueue.h"
#include "ormel-control/ServerScript.h"
#include "ormel-control/Watch.h"

namespace ormel::control {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* talkingServer = R"(
  always answer initialize with {}
  always ignore initialized
  client asks account/read
  server answers {"account": null, "requiresVelnorAuth": false}
  server notifies thread/name/updated {"threadId": "t1", "threadName": "Birds \u001b[31m"}
  server notifies skills/changed {}
  wait until killed
)";

TEST(ControlWatch, PrintsALineForEachNotification) {
  for (const int signal : {SIGINT, SIGTERM}) {
    const testing::SimulatorScenario scenario(talkingServer);
    const ServerScript server;
    ControlProgram program({"--server", server.path(), "watch"}, scenario.environment());
    EXPECT_EQ(program.child().readLine(), "thread/name/updated  threadId=t1  threadName=\"Birds \\u001b[31m\"\n");
    EXPECT_EQ(program.child().readLine(), "skills/changed\n");
    ::kill(program.child().processID(), signal);
    const ControlEnd end = program.end();
    EXPECT_EQ(end.status, 128 + signal);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "");
    EXPECT_TRUE(server.hasEnded());
    EXPECT_THAT(scenario.failures(), IsEmpty());
  }
}

TEST(ControlWatch, PrintsALineOfJSONForEachNotification) {
  const testing::SimulatorScenario scenario(talkingServer);
  ControlProgram program({"watch", "--json"}, scenario.environment());
  EXPECT_EQ(JSONValue::decode(program.child().readLine()), JSONValue::decode(R"({"method": "thread/name/updated",
                                  "params": {"threadId": "t1", "threadName": "Birds \u001b[31m"}})"));
  EXPECT_EQ(JSONValue::decode(program.child().readLine()),
            JSONValue::decode(R"({"method": "skills/changed", "params": {}})"));
  program.child().closeOutput();
  EXPECT_EQ(program.child().readErrors(), "");
  EXPECT_EQ(program.child().wait().status, 0);
}

TEST(ControlWatch, EndsWhenNobodyReadsAnyMore) {
  const testing::SimulatorScenario scenario(talkingServer);
  const ServerScript server;
  ControlProgram program({"--server", server.path(), "watch"}, scenario.environment());
  program.child().readLine();
  program.child().closeOutput();
  EXPECT_EQ(program.child().readErrors(), "");
  EXPECT_EQ(program.child().wait().status, 0);
  EXPECT_TRUE(server.hasEnded());
}

TEST(ControlWatch, EndsBySignalWhileAReaderDoesNotRead) {
  const testing::SimulatorScenario scenario(R"(
    always answer initialize with {}
    always ignore initialized
    client asks account/read
    repeat 3000 times
      server notifies warning {"message": "a text that fills the pipe to the reader, sooner or later, by being repeated"}
    end
    server answers {"account": null, "requiresVelnorAuth": false}
    wait until killed
  )");
  const ServerScript server;
  ControlProgram program({"--server", server.path(), "watch"}, scenario.environment());
  testing::awaitReadable(program.child().outputDescriptor());
  ::kill(program.child().processID(), SIGTERM);
  EXPECT_EQ(program.child().wait().status, 128 + SIGTERM);
  EXPECT_TRUE(server.hasEnded());
}

TEST(ControlWatch, FailsWithTheServer) {
  const testing::SimulatorScenario scenario(R"(
    always answer initialize with {}
    always ignore initialized
    client asks account/read
    server writes stderr "out of memory\n"
    server exits 3
  )");
  const ControlEnd end = control({"watch"}, scenario);
  EXPECT_EQ(end.status, 1);
  EXPECT_THAT(end.errors, HasSubstr("out of memory"));
}

/// Uses a second of processor time. On a machine with much to do, too, a program that never waits gets as much
/// meanwhile.
void useASecond() {
  struct timespec used{};
  const auto nanoseconds = [&] {
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return static_cast<std::int64_t>(used.tv_sec) * 1'000'000'000 + used.tv_nsec;
  };
  const std::int64_t end = nanoseconds() + 1'000'000'000;
  while (nanoseconds() < end) continue;
}

TEST(ControlWatch, UsesNoTimeWhileNothingComes) {
  const testing::SimulatorScenario scenario(talkingServer);
  ControlProgram program({"watch"}, scenario.environment());
  program.child().readLine();
  program.child().readLine();
  EXPECT_FALSE(testing::isReadable(program.child().outputDescriptor()));
  useASecond();
  ::kill(program.child().processID(), SIGTERM);
  program.child().readRestOfOutput();
  const auto usage = program.child().wait().usage;
  const double seconds = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                         static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
  EXPECT_LT(seconds, 0.5);
}

TEST(ControlWatch, LosesTheOldestNotificationsForAReaderWhoFallsBehind) {
  constexpr std::size_t lost = 3;
  NotificationQueue queue;
  for (std::size_t number = 0; number < NotificationQueue::mostKept + lost; ++number) {
    queue.put({std::to_string(number), std::nullopt});
  }
  EXPECT_EQ(queue.takeLost(), lost);
  EXPECT_EQ(queue.takeLost(), 0U);
  std::size_t taken = 0;
  for (; const auto notification = queue.take(); ++taken) {
    ASSERT_EQ(notification->method, std::to_string(taken + lost));
  }
  EXPECT_EQ(taken, NotificationQueue::mostKept);
}

TEST(ControlWatch, ShortensParams) {
  const struct {
    const char* params;
    const char* line;
  } rows[] = {
      {"null", "m  null"},
      {"[1, 2]", "m  [1,2]"},
      {"{}", "m"},
      {R"({"b": 1.5, "a": true, "c": null})", "m  a=true  b=1.5  c=null"},
      {R"({"a": "", "b": "two words", "c": "x=y"})", "m  a=\"\"  b=\"two words\"  c=\"x=y\""},
      {R"({"a": {"b": [1]}})", "m  a={\"b\":[1]}"},
      {R"({"a": "123456789 123456789 123456789 123456789 123456789 123456789 123"})",
       "m  a=\"123456789 123456789 123456789 123456789 123456789 12345678…"},
      {R"({"k\u001b": "\u202e"})", "m  k\\u001b=\\u202e"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(shortLine({"m", JSONValue::decode(row.params)}), row.line);
  }
  EXPECT_EQ(shortLine({"a\nb", std::nullopt}), "a\\nb");
  EXPECT_EQ(jsonLine({"m", std::nullopt}), "{\"method\":\"m\"}");
}

}  // namespace
}  // namespace ormel::control
