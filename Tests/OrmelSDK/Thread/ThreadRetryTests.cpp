#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "OrmelSDK/Thread/ThreadOperations.h"

namespace ormel::testing {
namespace {

struct Judged {
  bool isAborted = false;
  bool isRetryable = false;
  friend bool operator==(const Judged&, const Judged&) = default;
};

Judged judged(const std::function<void()>& work) {
  try {
    work();
  } catch (const Error& error) {
    return {error.isAborted(), error.isRetryable()};
  }
  ADD_FAILURE() << "no failure";
  return {};
}

TEST(ThreadRetry, IsWorthItWhenTheServerWasLostOrSilent) {
  const Judged abortedOnly = {true, false};
  const Judged retryable = {false, true};
  const Judged neither = {false, false};
  const struct {
    const char* name;
    std::function<void(SimulatedThread&)> prepare;
    std::function<void(SimulatedThread&)> happen;
    Judged expected;
  } rows[] = {
      {"exit during a turn", nullptr, [](SimulatedThread& server) { server.process().exit(1); }, retryable},
      {"end of output", nullptr, [](SimulatedThread& server) { server.process().closeOutput(); }, retryable},
      {"no answer", [](SimulatedThread& server) { server.keep("turn/start"); }, nullptr, retryable},
      {"refusal", [](SimulatedThread& server) { server.refuse("turn/start", "no such model"); }, nullptr, neither},
      {"garbage", nullptr, [](SimulatedThread& server) { server.write("?\n"); }, neither},
      {"failed turn", nullptr, [](SimulatedThread& server) { server.completeTurn("failed"); }, neither},
      {"interrupt", nullptr,
       [](SimulatedThread& server) {
         server.end(server.thread->interrupt());
         server.completeTurn("interrupted");
       },
       abortedOnly},
      {"close", nullptr, [](SimulatedThread& server) { server.end(server.thread->close()); }, abortedOnly},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    SimulatedScheduler scheduler(1);
    SimulatedThread server(scheduler);
    if (row.prepare) row.prepare(server);
    const auto turn = server.start(server.thread->run("hello"));
    if (row.happen) row.happen(server);
    server.pass(std::chrono::seconds(31));
    EXPECT_EQ(judged([&] { server.taken(turn); }), row.expected);
  }
}

TEST(ThreadRetry, IsWorthItAfterAnotherOperation) {
  SimulatedScheduler scheduler(1);
  SimulatedThread server(scheduler);
  const auto turn = server.start(server.thread->run("hello"));
  EXPECT_EQ(judged([&] { server.end(server.thread->run("hello")); }), (Judged{false, true}));
  EXPECT_EQ(
      judged([&] {
        server.end(
            Thread(*server.thread).startReviewStreamed(ReviewTarget::uncommittedChanges(), ReviewDelivery::detached));
      }),
      (Judged{false, false}));
  server.completeTurn();
  server.taken(turn);
}

}  // namespace
}  // namespace ormel::testing
