#include "OrmelSDK/AppServerRun/Launch/OrmelExecutableTrustPolicy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <stdexcept>

#include "OrmelSDK/Platform/HostProcess.h"
#include "OrmelSDK/Platform/ProcessLaunchError.h"

namespace ormel {

namespace {

using Assessment = OrmelExecutableTrustAssessment;
using CommandError = OrmelExecutableTrustCommandError;
using Policy = OrmelExecutableTrustPolicy;
using Result = OrmelExecutableTrustCommandResult;

const std::string path = "/opt/ormel";
const Result verified(0, "");
const Result displayed(0, "Identifier=ormel\nTeamIdentifier=7QF918KZX4\n");
const Result accepted(0, "/opt/ormel: accepted\nsource=Notarized Developer ID\n");
const std::string wrongTeam = "it is not signed by Velnor (Team ID 7QF918KZX4).";

/// Gives prepared results in turn, and keeps the command lines. Throws when there is no result left.
class ScriptedRunner {
 public:
  explicit ScriptedRunner(std::deque<Result> results) : results_(std::move(results)) {}

  Assessment assess(const std::string& executablePath = path) {
    return Policy::assess(executablePath,
                          [this](const std::string& command, const std::vector<std::string>& arguments) {
                            return run(command, arguments);
                          });
  }

  const std::vector<std::vector<std::string>>& commands() const { return commands_; }

 private:
  Result run(const std::string& command, const std::vector<std::string>& arguments) {
    commands_.push_back({command});
    commands_.back().insert(commands_.back().end(), arguments.begin(), arguments.end());
    if (results_.empty()) throw CommandError::timedOut(command, 10);
    const auto result = results_.front();
    results_.pop_front();
    return result;
  }

  std::deque<Result> results_;
  std::vector<std::vector<std::string>> commands_;
};

Assessment verdictOn(const std::string& output, const std::string& executablePath = path) {
  return ScriptedRunner({verified, displayed, Result(3, output)}).assess(executablePath);
}

}  // namespace

TEST(OrmelExecutableTrustPolicy, TrustsAfterThreeCommands) {
  ScriptedRunner runner({verified, displayed, accepted});
  EXPECT_EQ(runner.assess(), Assessment::trusted());
  const std::vector<std::vector<std::string>> expected = {
      {"/usr/bin/codesign", "--verify", "--strict", path},
      {"/usr/bin/codesign", "--display", "--verbose=4", path},
      {"/usr/sbin/spctl", "--assess", "--type", "execute", "--verbose=4", path}};
  EXPECT_EQ(runner.commands(), expected);
}

TEST(OrmelExecutableTrustPolicy, RejectsABrokenSignatureWithTheToolsWords) {
  ScriptedRunner runner({Result(1, " \n/opt/ormel: invalid signature\r\n\t")});
  EXPECT_EQ(runner.assess(), Assessment::rejected("/opt/ormel: invalid signature"));
  EXPECT_EQ(runner.commands().size(), 1U);
}

TEST(OrmelExecutableTrustPolicy, RejectsABrokenSignatureWithWordsOfItsOwnWhenTheToolHasNone) {
  ScriptedRunner runner({Result(1, "\n \n")});
  EXPECT_EQ(runner.assess(), Assessment::rejected("code signature verification failed."));
}

TEST(OrmelExecutableTrustPolicy, RejectsWhenTheSignatureCannotBeShown) {
  ScriptedRunner runner({verified, Result(1, displayed.output)});
  EXPECT_EQ(runner.assess(), Assessment::rejected(wrongTeam));
  EXPECT_EQ(runner.commands().size(), 2U);
}

TEST(OrmelExecutableTrustPolicy, RejectsAnotherTeam) {
  ScriptedRunner runner({verified, Result(0, "TeamIdentifier=0000000000\n")});
  EXPECT_EQ(runner.assess(), Assessment::rejected(wrongTeam));
  EXPECT_EQ(runner.commands().size(), 2U);
}

TEST(OrmelExecutableTrustPolicy, TrustsInSpiteOfAPlainRefusalByTheThirdCommand) {
  EXPECT_EQ(verdictOn("/opt/ormel: rejected\n"), Assessment::trusted());
}

TEST(OrmelExecutableTrustPolicy, RejectsEveryNamedVerdict) {
  for (const std::string word : {"malware", "malicious", "revoked", "blocked", "xprotect"}) {
    const auto output = "/opt/ormel: rejected\norigin: " + word + "\n";
    EXPECT_EQ(verdictOn(output), Assessment::rejected(output)) << word;
  }
}

TEST(OrmelExecutableTrustPolicy, RejectsInWhateverCaseAndKeepsTheToolsOwn) {
  EXPECT_EQ(verdictOn("  CERT REVOKED \n"), Assessment::rejected("  CERT REVOKED \n"));
}

TEST(OrmelExecutableTrustPolicy, DoesNotCountAWordInThePathAtTheStart) {
  const std::string blockedPath = "/opt/blocked/ormel";
  EXPECT_EQ(verdictOn("/opt/blocked/ormel: accepted\n", blockedPath), Assessment::trusted());
  EXPECT_EQ(verdictOn("/opt/blocked/ormel", blockedPath), Assessment::trusted());
  EXPECT_EQ(verdictOn("", blockedPath), Assessment::trusted());
}

TEST(OrmelExecutableTrustPolicy, CountsAWordOfThePathAnywhereElse) {
  const std::string blockedPath = "/opt/blocked/ormel";
  for (const std::string output :
       {"/opt/blocked/ormel: accepted\nsource=/opt/blocked/ormel", " /opt/blocked/ormel: accepted",
        "/opt/blocked/ormel2: accepted", "/opt/blocked/ormel: blocked", "\n/opt/blocked/ormel: accepted"}) {
    EXPECT_EQ(verdictOn(output, blockedPath), Assessment::rejected(output)) << output;
  }
}

TEST(OrmelExecutableTrustPolicy, RejectsAtTheFirstFailureWithItsText) {
  ScriptedRunner runner({});
  EXPECT_EQ(runner.assess(),
            Assessment::rejected("Trust validation command /usr/bin/codesign timed out after 10 seconds."));
  EXPECT_EQ(runner.commands().size(), 1U);
}

TEST(OrmelExecutableTrustPolicy, RejectsWhicheverCommandFails) {
  EXPECT_EQ(ScriptedRunner({verified}).assess(),
            Assessment::rejected("Trust validation command /usr/bin/codesign timed out after 10 seconds."));
  EXPECT_EQ(ScriptedRunner({verified, displayed}).assess(),
            Assessment::rejected("Trust validation command /usr/sbin/spctl timed out after 10 seconds."));
}

TEST(OrmelExecutableTrustPolicy, RejectsWhateverARunnerThrows) {
  const auto throwsForeign = [](const std::string&, const std::vector<std::string>&) -> Result {
    throw std::runtime_error("no tools today");
  };
  const auto throwsNumber = [](const std::string&, const std::vector<std::string>&) -> Result { throw 7; };
  EXPECT_EQ(Policy::assess(path, throwsForeign), Assessment::rejected("no tools today"));
  EXPECT_FALSE(Policy::assess(path, throwsNumber).isTrusted());
  EXPECT_FALSE(Policy::assess(path, {}).isTrusted());
}

TEST(OrmelExecutableTrustPolicy, AssessesTheSystemsWayWithTheGivenRunner) {
  std::deque<Result> results = {verified, displayed, accepted};
  const auto runner = [&results](const std::string&, const std::vector<std::string>&) {
    const auto result = results.front();
    results.pop_front();
    return result;
  };
  EXPECT_EQ(Policy::assessSystemExecutable(path, runner), Assessment::trusted());
}

TEST(OrmelExecutableTrustPolicy, RejectsWhatTheSystemsToolsDoNotVouchForAndEverythingWhereThereAreNone) {
  const bool hasTools = detail::hostPlatform() == detail::HostPlatform::macOSArm64;
  EXPECT_EQ(Policy::assessSystemExecutable("/bin/sh"),
            Assessment::rejected(hasTools ? wrongTeam : "/usr/bin/codesign: No such file or directory"));
}

TEST(GatekeeperVerdict, DropsThePathAndLowersTheRest) {
  EXPECT_EQ(Policy::gatekeeperVerdict("/A/B: Accepted\nSource=X", "/A/B"), ": accepted\nsource=x");
  EXPECT_EQ(Policy::gatekeeperVerdict("/A/B", "/A/B"), "");
  EXPECT_EQ(Policy::gatekeeperVerdict("/A/B\n\nX\n", "/A/B"), "\n\nx\n");
  EXPECT_EQ(Policy::gatekeeperVerdict("/A/BC: Yes", "/A/B"), "/a/bc: yes");
  EXPECT_EQ(Policy::gatekeeperVerdict("", "/A/B"), "");
  EXPECT_EQ(Policy::gatekeeperVerdict("\n/A/B: Yes", "/A/B"), "\n/a/b: yes");
}

TEST(GatekeeperVerdict, KnowsThePathInAnotherCompositionOfItsCharacters) {
  EXPECT_EQ(Policy::gatekeeperVerdict("/Bu\xCC\x88ro: Accepted", "/B\xC3\xBCro"), ": accepted");
}

TEST(OrmelExecutableTrustCommandError, SaysWhatHappened) {
  const auto late = CommandError::timedOut("/bin/x", 10.0);
  EXPECT_STREQ(late.what(), "Trust validation command /bin/x timed out after 10 seconds.");
  EXPECT_EQ(late.kind(), CommandError::Kind::timedOut);
  EXPECT_EQ(late.command(), "/bin/x");
  EXPECT_EQ(late.timeoutSeconds(), 10.0);
  EXPECT_STREQ(CommandError::timedOut("/bin/x", 0.5).what(),
               "Trust validation command /bin/x timed out after 0 seconds.");
  const auto held = CommandError::outputReadTimedOut("/bin/x");
  EXPECT_STREQ(held.what(), "Trust validation command /bin/x did not close its output.");
  EXPECT_EQ(held.kind(), CommandError::Kind::outputReadTimedOut);
  EXPECT_EQ(held.command(), "/bin/x");
}

}  // namespace ormel
