#include "OrmelSDK/AppServerRun/Launch/SystemTrustCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <fstream>
#include <limits>
#include <optional>
#include <string>
#include <thread>

#include "OrmelSDK/AppServerRun/Launch/OrmelExecutableTrustPolicy.h"
#include "OrmelSDK/Platform/ProcessLaunchError.h"
#include "Support/Eventually.h"
#include "Support/Fifo.h"
#include "Support/ForeignReaping.h"
#include "Support/ProcessResources.h"
#include "Support/RecordedChild.h"
#include "Support/TemporaryDirectory.h"

namespace ormel::detail {

namespace {

using testing::eventually;
using testing::Fifo;
using testing::helper;
using testing::ProcessResources;
using testing::shell;
using CommandError = OrmelExecutableTrustCommandError;
using Result = OrmelExecutableTrustCommandResult;
using std::chrono::milliseconds;

const std::string statusWasTaken =
    " has ended, but its exit status is unknown: another part of this process has reaped it.";

/// Longer than any command takes that ends by itself.
constexpr double plenty = 60;

TrustCommandWaits shortWaits() {
  TrustCommandWaits waits;
  waits.termination = milliseconds(50);
  waits.kill = milliseconds(60'000);
  waits.output = milliseconds(50);
  return waits;
}

TrustCommandWaits longWaits() {
  TrustCommandWaits waits;
  waits.termination = waits.kill = waits.output = milliseconds(60'000);
  return waits;
}

Result run(const LaunchSettings& settings, double timeoutSeconds, const TrustCommandWaits& waits) {
  auto outcome = runTrustCommand(settings.executable, settings.arguments, timeoutSeconds, waits);
  return trustCommandResult(settings.executable, std::move(outcome));
}

/// How the command fails; its name in the text is replaced by "COMMAND".
std::string failureOf(const LaunchSettings& settings, double timeoutSeconds, const TrustCommandWaits& waits) {
  try {
    run(settings, timeoutSeconds, waits);
    return "ended";
  } catch (const CommandError& error) {
    auto text = error.description();
    return text.replace(text.find(settings.executable), settings.executable.size(), "COMMAND");
  }
}

/// Nothing of a command may be left when its run is over, however it went.
class SystemTrustCommand : public ::testing::Test {
 protected:
  void SetUp() override {
    // A thread sanitizer starts a thread of its own along with the first one.
    std::thread([] {}).join();
    before_ = ProcessResources::now();
  }

  void TearDown() override {
    EXPECT_TRUE(eventually([this] { return ProcessResources::now().isNoMoreThan(before_); }));
  }

 private:
  ProcessResources before_;
};

}  // namespace

TEST_F(SystemTrustCommand, GivesTheStatusAndStandardOutputBeforeStandardError) {
  EXPECT_EQ(run(shell("echo error >&2; echo output; exit 3"), plenty, longWaits()), Result(3, "output\nerror\n"));
}

TEST_F(SystemTrustCommand, GivesTheNumberOfTheSignalThatEndedTheCommand) {
  EXPECT_EQ(run(shell("kill -KILL $$"), plenty, longWaits()), Result(SIGKILL, ""));
}

TEST_F(SystemTrustCommand, RepairsOutputThatIsNoText) {
  EXPECT_EQ(run(shell("printf 'a\\377'; printf '\\377b' >&2"), plenty, longWaits()), Result(0,
                                                                                            "a\xEF\xBF\xBD\xEF\xBF\xBD"
                                                                                            "b"));
}

TEST_F(SystemTrustCommand, IsNotHeldUpByACommandThatFloodsBothStreams) {
  const auto result = run(helper({"flood", "8388608"}), plenty, longWaits());
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output.size(), 2U * 8'388'608);
}

TEST_F(SystemTrustCommand, PropagatesAFailureToLaunch) {
  LaunchSettings missing;
  missing.executable = "/no/such/tool";
  EXPECT_THROW(run(missing, plenty, longWaits()), ProcessLaunchError);
}

TEST_F(SystemTrustCommand, EndsACommandThatTakesTooLong) {
  EXPECT_EQ(failureOf(helper({"hang"}), 0.05, longWaits()),
            "Trust validation command COMMAND timed out after 0 seconds.");
}

TEST_F(SystemTrustCommand, AsksACommandToEndBeforeItKillsIt) {
  const testing::TemporaryDirectory directory;
  std::string noted;
  // The command has to be ready to note the request before its time is over, however slow the machine.
  for (double time = 0.1; !noted.starts_with("ready") && time < 60; time *= 2) {
    const auto file = directory.addFile("notes");
    failureOf(helper({"note-termination", file}), time, longWaits());
    std::getline(std::ifstream(file), noted);
  }
  EXPECT_EQ(noted, "ready terminated");
}

TEST_F(SystemTrustCommand, KillsACommandThatDoesNotEndWhenAsked) {
  EXPECT_EQ(failureOf(helper({"ignore-termination"}), 0.3, shortWaits()),
            "Trust validation command COMMAND timed out after 0 seconds.");
}

TEST_F(SystemTrustCommand, TimesOutThoughTheOutputIsClosed) {
  EXPECT_EQ(failureOf(helper({"close-output"}), 0.05, longWaits()),
            "Trust validation command COMMAND timed out after 0 seconds.");
}

TEST_F(SystemTrustCommand, TimesOutAtOnceWithoutAnyTime) {
  for (const double time :
       {0.0, -1.0, -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_THROW(run(helper({"hang"}), time, longWaits()), CommandError) << time;
  }
}

TEST_F(SystemTrustCommand, LeavesACommandThatCannotBeWaitedForToTheBackground) {
  TrustCommandWaits none;
  none.termination = none.kill = none.output = milliseconds(0);
  EXPECT_EQ(failureOf(helper({"hang"}), 0, none), "Trust validation command COMMAND timed out after 0 seconds.");
}

TEST_F(SystemTrustCommand, DoesNotWaitForAGrandchildThatHoldsTheOutput) {
  Fifo grandchildsLife;
  EXPECT_EQ(failureOf(helper({"leave-grandchild", grandchildsLife.path(), "0"}), plenty, shortWaits()),
            "Trust validation command COMMAND did not close its output.");
}

/// Runs a command that ends at once, again and again, in an application that reaps every child. Where the system tells
/// the status only once, the command may fail, and says why.
void expectTrueStatusOrReason() {
  const auto settings = shell("echo words; exit 3");
  for (int round = 0; round < 50; ++round) {
    try {
      const auto result =
          OrmelExecutableTrustPolicy::runSystemTrustCommand(settings.executable, settings.arguments, plenty);
      EXPECT_EQ(result, Result(3, "words\n"));
    } catch (const Error& error) {
      EXPECT_FALSE(testing::endsAreTold()) << error.description();
      EXPECT_EQ(error.description(), "Trust validation command " + settings.executable + statusWasTaken);
    }
  }
}

TEST_F(SystemTrustCommand, KeepsItsStatusThoughSIGCHLDIsIgnored) {
  const testing::IgnoredChildren ignored;
  expectTrueStatusOrReason();
}

TEST_F(SystemTrustCommand, KeepsItsStatusThoughAThreadReapsEveryChild) {
  const testing::ReapingThread reaper;
  expectTrueStatusOrReason();
}

#if defined(__linux__)
TEST_F(SystemTrustCommand, SaysThatItsStatusIsUnknownWhereTheSystemDoesNotTell) {
  const testing::IgnoredChildren ignored;
  const auto settings = shell("echo words; exit 0");
  const auto outcome =
      runTrustCommand(settings.executable, settings.arguments, plenty, longWaits(), EndNotice::waiterThread);
  EXPECT_EQ(outcome, (TrustCommandOutcome{std::nullopt, "words\n"}));
  EXPECT_THAT([&] { trustCommandResult("/usr/bin/tool", outcome); },
              ::testing::ThrowsMessage<Error>("Trust validation command /usr/bin/tool" + statusWasTaken));
}
#endif

/// The result of each tool, and what is made of it.
struct OutcomeCase {
  TrustCommandOutcome verified;
  TrustCommandOutcome displayed;
  TrustCommandOutcome assessed;
  /// Empty for trust.
  std::string reason;
};

TEST(TrustByOutcomes, RejectsWithoutAStatusThatCounts) {
  const TrustCommandOutcome good{0, ""};
  const TrustCommandOutcome ours{0, "TeamIdentifier=7QF918KZX4"};
  const TrustCommandOutcome lost{std::nullopt, ""};
  const TrustCommandOutcome oursLost{std::nullopt, "TeamIdentifier=7QF918KZX4"};
  const std::string reason = "Trust validation command /usr/bin/codesign" + statusWasTaken;
  const OutcomeCase cases[] = {
      {good, ours, good, ""},     {good, ours, {3, "rejected"}, ""},
      {lost, ours, good, reason}, {good, oursLost, good, reason},
      {good, ours, lost, ""},     {good, ours, {std::nullopt, "/opt/ormel: revoked"}, "/opt/ormel: revoked"},
  };
  for (const auto& row : cases) {
    std::vector<TrustCommandOutcome> left = {row.assessed, row.displayed, row.verified};
    const auto answer = assessByOutcomes("/opt/ormel", [&left](const std::string&, const std::vector<std::string>&) {
      auto outcome = left.back();
      left.pop_back();
      return outcome;
    });
    EXPECT_EQ(answer.isTrusted(), row.reason.empty());
    EXPECT_EQ(answer.isTrusted() ? "" : answer.reason(), row.reason);
  }
}

TEST_F(SystemTrustCommand, KeepsItsPublicPromiseWithTheRealWaits) {
  const auto hanging = helper({"ignore-termination"});
  const auto call = [&hanging] {
    OrmelExecutableTrustPolicy::runSystemTrustCommand(hanging.executable, hanging.arguments, 1.0);
  };
  EXPECT_THAT(call, ::testing::ThrowsMessage<CommandError>(::testing::EndsWith(" timed out after 1 seconds.")));

  Fifo grandchildsLife;
  const auto leaving = helper({"leave-grandchild", grandchildsLife.path(), "0"});
  const auto held = [&leaving] {
    OrmelExecutableTrustPolicy::runSystemTrustCommand(leaving.executable, leaving.arguments, plenty);
  };
  EXPECT_THAT(held, ::testing::ThrowsMessage<CommandError>(::testing::EndsWith("did not close its output.")));
}

TEST(TrustCommandWaits, AreAQuarterOfASecondAndASecond) {
  const TrustCommandWaits waits;
  EXPECT_EQ(waits.termination, milliseconds(250));
  EXPECT_EQ(waits.kill, milliseconds(1000));
  EXPECT_EQ(waits.output, milliseconds(1000));
}

}  // namespace ormel::detail
