#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include "OrmelSDK/Ormel.h"
#include "Support/ProcessResources.h"
#include "Support/RunTranscript.h"
#include "Support/SimulatorScenario.h"

namespace {

using namespace ormel;
using namespace ormel::testing;

/// How much more memory a process may hold after thousands of rounds than after the first ones. A leak of one small
/// object a round exceeds it; what the allocator keeps for later does not.
constexpr std::size_t toleratedGrowth = 4U << 20U;

/// The number in the environment is that of a long soak, see `scripts/soak`.
std::optional<int> numberInEnvironment(const char* name) {
  const char* text = std::getenv(name);
  return text && *text ? std::optional(std::atoi(text)) : std::nullopt;
}

ProcessResources whenQuiet() {
  EXPECT_TRUE(eventually([] { return !ProcessResources::now().hasChildren; }));
  return ProcessResources::now();
}

/// Rounds of something that is to leave everything as it was.
class Soak {
 public:
  Soak(const char* name, int rounds, bool isLong) : name_(name), rounds_(rounds), isLong_(isLong) {}

  /// `look` tells what the process holds, at moments that compare.
  template <typename Round, typename Look>
  void run(Round round, Look look) const {
    const auto begin = std::chrono::steady_clock::now();
    const int warmUp = rounds_ / 5;
    for (int index = 1; index <= warmUp; ++index) {
      round(index);
      tellProgress(index, begin);
    }
    const ProcessResources before = look();
    for (int index = warmUp + 1; index <= rounds_; ++index) {
      round(index);
      if (::testing::Test::HasFailure()) return;
      tellProgress(index, begin);
    }
    const ProcessResources after = look();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    std::cout << rounds_ << " " << name_ << " in " << taken.count() << " s; after " << warmUp
              << " and at the end: " << before.residentBytes / 1024 << " and " << after.residentBytes / 1024 << " KiB, "
              << before.descriptors << " and " << after.descriptors << " descriptors, " << before.threads << " and "
              << after.threads << " threads\n";
    // That of the end of a child goes a moment after the child.
    EXPECT_TRUE(eventually([&] { return ProcessResources::now().descriptors <= before.descriptors; }));
    // A thread that was lent to the application for a moment goes when it has been idle for a while.
    EXPECT_TRUE(eventually([&] { return ProcessResources::now().threads <= before.threads; }));
    EXPECT_EQ(after.hasChildren, before.hasChildren);
    // A few rounds tell nothing of memory, and the sanitizers keep what was freed.
    if (isLong_) {
      EXPECT_LE(after.residentBytes, before.residentBytes + toleratedGrowth);
    }
  }

 private:
  /// A line for each tenth of a long soak, in the form of those of the scripts.
  void tellProgress(int index, std::chrono::steady_clock::time_point begin) const {
    if (!isLong_ || rounds_ < 10 || index % (rounds_ / 10) != 0) return;
    const auto taken =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - begin).count();
    std::cerr << "soak: [" << index << " of " << rounds_ << ", " << taken / 60 << ":" << taken / 10 % 6 << taken % 10
              << "] " << name_ << '\n';
  }

  const char* name_;
  int rounds_;
  bool isLong_;
};

Soak soakOf(const char* variable, const char* name, int shortRounds) {
  const auto number = numberInEnvironment(variable);
  return Soak(name, number.value_or(shortRounds), number.has_value());
}

constexpr const char* opening = R"(
time limit 7200 s
always ignore initialized
always answer initialize with {}
always answer thread/start with {"thread": {"id": "t1"}}
always answer thread/resume {"threadId": "$string:resumed"} with {"thread": {"id": "$resumed"}}
)";

/// A server without a record, which would grow.
class UnrecordedServer {
 public:
  explicit UnrecordedServer(std::string_view scenario) : scenario_(opening + std::string(scenario)) {}

  Thread startThread() const {
    OrmelOptions options;
    options.ormelPathOverride = SimulatorScenario::executable();
    options.env = scenario_.wholeEnvironment();
    options.env->erase("ORMEL_SIMULATOR_RECORD");
    return Ormel(options).startThread();
  }

 private:
  SimulatorScenario scenario_;
};

// The number of a turn shows that one process serves all.
TEST(ThreadSoak, OfManyTurnsOnOneProcessLeavesEverythingAsItWas) {
  const UnrecordedServer server(R"(
    repeat 100000000 times as turn
      client asks turn/start
      server answers {"turn": {"id": "turn-${turn}"}}
      server notifies turn/started {"threadId": "t1", "turn": {"id": "turn-${turn}"}}
      server notifies item/started {"item": {"type": "agentMessage", "id": "m${turn}", "text": ""}}
      repeat 8 times
        server notifies item/agentMessage/delta {"itemId": "m${turn}", "delta": "a few words "}
      end
      server notifies item/completed {"item": {"type": "agentMessage", "id": "m${turn}", "text": "${turn}"}}
      server notifies turn/completed {"threadId": "t1", "turn": {"id": "turn-${turn}", "status": "completed"}}
    end)");
  const Thread thread = server.startThread();
  // One signal for all turns, which must let go of each.
  const AbortController controller;
  TurnOptions options;
  options.signal = controller.signal;
  const auto turn = [&](int index) {
    ASSERT_EQ(thread.run("hello", options).get().finalResponse, std::to_string(index));
  };
  soakOf("ORMEL_SOAK_TURNS", "turns", 300).run(turn, &ProcessResources::now);
}

TEST(ThreadSoak, OfManyServersLeavesEverythingAsItWas) {
  const UnrecordedServer interrupted(R"(
    client asks turn/start
    server answers {"turn": {"id": "u1"}}
    client asks turn/interrupt
    server answers {}
    server notifies turn/completed {"turn": {"id": "u1", "status": "interrupted"}})");
  const UnrecordedServer crashing(R"(
    client asks turn/start
    server answers {"turn": {"id": "u1"}}
    server writes stderr "panicked\n"
    server exits 3)");
  const UnrecordedServer sound(R"(
    client asks turn/start
    server answers {"turn": {"id": "u1"}}
    server notifies turn/completed {"turn": {"id": "u1", "status": "completed"}})");
  const Thread interruptedThread = interrupted.startThread();
  const Thread crashingThread = crashing.startThread();
  const auto restart = [&](int index) {
    if (index % 3 == 0) {
      StreamedTurn streamed = interruptedThread.runStreamed("hello").get();
      interruptedThread.interrupt().get();
      ASSERT_EQ(told(streamed.events).back(), "aborted");
    } else if (index % 3 == 1) {
      ASSERT_EQ(failureOf([&] { crashingThread.run("hello").get(); }), "stream error: panicked");
    } else {
      ASSERT_EQ(failureOf([&] { sound.startThread().run("hello").get(); }), "no failure");
    }
  };
  soakOf("ORMEL_SOAK_RESTARTS", "servers", 30).run(restart, whenQuiet);
}

}  // namespace
