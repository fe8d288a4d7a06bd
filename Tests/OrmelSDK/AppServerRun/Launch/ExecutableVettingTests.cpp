#include "OrmelSDK/AppServerRun/Launch/ExecutableVetting.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "OrmelSDK/Base/OrmelProcessError.h"

namespace ormel::detail {
namespace {

using Assessment = OrmelExecutableTrustAssessment;

constexpr const char* path = "/opt/ormel";

/// The calls that were made, and options that note them.
class ExecutableVetting : public ::testing::Test {
 protected:
  void assessBy(Assessment answer) {
    options.executableTrustAssessment = [this, answer](const std::string& asked) {
      calls.push_back("assessment of " + asked);
      return answer;
    };
  }
  void runCommandsWith(int exitCode) {
    options.trustCommandRunner = [this, exitCode](const std::string& command, const std::vector<std::string>&) {
      calls.push_back(command);
      return OrmelExecutableTrustCommandResult(exitCode, "TeamIdentifier=7QF918KZX4");
    };
  }
  /// The reason of the rejection, or nothing.
  std::string rejection() const {
    try {
      requireTrustedExecutable(path, options);
      return "";
    } catch (const OrmelProcessError& error) {
      EXPECT_EQ(error.kind(), OrmelProcessError::Kind::untrustedExecutable);
      EXPECT_EQ(error.path(), path);
      return error.reason();
    }
  }

  OrmelOptions options;
  std::vector<std::string> calls;
};

TEST_F(ExecutableVetting, AsksTheApplicationAheadOfEverythingElse) {
  options.selectedOrmelPathOverride = true;
  runCommandsWith(0);
  assessBy(Assessment::rejected("not ours"));
  EXPECT_EQ(rejection(), "not ours");
  assessBy(Assessment::trusted());
  EXPECT_EQ(rejection(), "");
  EXPECT_EQ(calls, (std::vector<std::string>{"assessment of /opt/ormel", "assessment of /opt/ormel"}));
}

TEST_F(ExecutableVetting, MakesNoCheckOfAnExecutableThatTheCallerNamed) {
  options.selectedOrmelPathOverride = true;
  runCommandsWith(1);
  EXPECT_EQ(rejection(), "");
  EXPECT_TRUE(calls.empty());
}

TEST_F(ExecutableVetting, AsksTheSystemsToolsOtherwise) {
  runCommandsWith(0);
  EXPECT_EQ(rejection(), "");
  EXPECT_EQ(calls, (std::vector<std::string>{"/usr/bin/codesign", "/usr/bin/codesign", "/usr/sbin/spctl"}));
  runCommandsWith(1);
  EXPECT_EQ(rejection(), "TeamIdentifier=7QF918KZX4");
}

TEST_F(ExecutableVetting, DoesNotTakeAPathThatWasAskedForAndPassedOverForTheCallersChoice) {
  options.ormelPathOverride = path;
  runCommandsWith(1);
  EXPECT_NE(rejection(), "");
}

TEST_F(ExecutableVetting, RejectsWhenTheApplicationsAssessmentFails) {
  options.executableTrustAssessment = [](const std::string&) -> Assessment { throw std::runtime_error("offline"); };
  EXPECT_EQ(rejection(), "offline");
  options.executableTrustAssessment = [](const std::string&) -> Assessment { throw 1; };
  EXPECT_EQ(rejection(), "the trust check failed.");
}

/// The text of the failure to start the executable at the path `asked`, or nothing.
std::string refusalOf(const std::string& asked, const OrmelOptions& options) {
  try {
    requireTrustedExecutable(asked, options);
    return "";
  } catch (const OrmelProcessError& error) {
    EXPECT_EQ(error.kind(), OrmelProcessError::Kind::spawnFailed) << error.description();
    return error.description();
  }
}

struct PathCase {
  std::string path;
  /// Why it cannot be started; empty if it can.
  std::string reason;
};

const std::string forAnOption = "a path that begins with \"-\" would be taken for an option";
const std::string forAVariable = "a path with \"=\" in it would be taken for a variable of the environment";
const std::string forAName = "a name without \"/\" would be looked up in PATH";

const PathCase pathCases[] = {
    {"/opt/ormel", ""},
    {"./ormel", ""},
    {"bin/ormel", ""},
    {"../ormel", ""},
    {"./-ormel", ""},
    {"/-i/-", ""},
    {"/opt/my tools/or\"mel\n", ""},
    {"/opt/\u00fc\xff", ""},
    {"/", ""},
    {"-", forAnOption},
    {"--", forAnOption},
    {"-i", forAnOption},
    {"-S/bin/sh", forAnOption},
    {"--split-string=/bin/sh -c x", forAnOption},
    {"-u/ormel", forAnOption},
    {"=", forAVariable},
    {"/opt/a=b/ormel", forAVariable},
    {"/opt/ormel=", forAVariable},
    {"./ormel=1", forAVariable},
    {"PATH=/tmp", forAVariable},
    {"ormel", forAName},
    {"", forAName},
    {std::string("/opt/ormel\0x", 12), "a path ends at a zero byte"},
};

TEST_F(ExecutableVetting, RefusesAPathThatTheStarterWouldTakeForSomethingElse) {
  for (const bool isChosen : {true, false}) {
    options.selectedOrmelPathOverride = isChosen;
    runCommandsWith(0);
    for (const auto& [asked, reason] : pathCases) {
      calls.clear();
      const auto expected =
          reason.empty() ? "" : "The server executable \"" + asked + "\" cannot be started: " + reason;
      EXPECT_EQ(refusalOf(asked, options), expected);
      EXPECT_EQ(calls.empty(), isChosen || !reason.empty()) << "no tool may read " << asked;
    }
  }
}

TEST_F(ExecutableVetting, RefusesSuchAPathAlsoWhenTheApplicationTrustsIt) {
  assessBy(Assessment::trusted());
  runCommandsWith(0);
  EXPECT_NE(refusalOf("ormel", options), "");
  EXPECT_EQ(calls, (std::vector<std::string>{"assessment of ormel"}));
  assessBy(Assessment::rejected("not ours"));
  EXPECT_THROW(requireTrustedExecutable("ormel", options), OrmelProcessError);
}

}  // namespace
}  // namespace ormel::detail
