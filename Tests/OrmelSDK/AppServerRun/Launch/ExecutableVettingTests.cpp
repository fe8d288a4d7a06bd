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

}  // namespace
}  // namespace ormel::detail
