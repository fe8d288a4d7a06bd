#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "examples/ExampleOutput.h"

namespace ormel {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using testing::outputOf;

TEST(ManagementExamples, GiveAThreadAGoalAndForkIt) {
  EXPECT_EQ(outputOf("11-threads"),
            "Know the birds: 50000 tokens\nKnow the birds: any number of tokens\n"
            "A turn of the fork: 3 items, completed\n");
}

TEST(ManagementExamples, SignInWithACodeAndOut) {
  EXPECT_EQ(outputOf("12-accounts"),
            "Enter FERN-2046 at https://login.parlane.example/device\n"
            "Signed in as robin@parlane.example\n62% of the limit is used\nSigned out\n");
}

TEST(ManagementExamples, InstallAPluginForAMoment) {
  EXPECT_EQ(outputOf("13-plugins"),
            "garden: 2 plugins\nharbour: 2 plugins\nworkspace: 1 plugins\n"
            "herbarium@garden brings 2 skills\nSign in to Seed Exchange\nremoved\n");
}

TEST(ManagementExamples, ChangeTheConfigurationUnlessItIsStale) {
  const std::string output = outputOf("14-configuration");
  EXPECT_THAT(output, HasSubstr("simulated, unless another one is chosen\nsimulated-quick\n"));
  EXPECT_THAT(output, HasSubstr("Refused, since the version is another one by now: -32600\n"));
  EXPECT_THAT(output, HasSubstr("\nwater-the-beds is off\n"));
}

TEST(ManagementExamples, ListAppsAndCallAToolOfAnMcpServer) {
  EXPECT_EQ(outputOf("15-apps"),
            "Almanac\nHarbour Log, not connected\nSeed Exchange, not connected\nLetterbox\nWeathercock\n"
            "almanac: 2 tools\nletterbox: 1 tools\norchard: 0 tools\nrusty-pump: 0 tools\n"
            "Pretended to call look_up with {\"day\":\"tomorrow\"}\n");
}

TEST(ManagementExamples, RunCommandsWithTheirLimits) {
  EXPECT_EQ(outputOf("16-commands"), "exit code 0, output \"$HOME & more\"\nexit code 3, output \"/\"\nwoken up\n");
}

TEST(ManagementExamples, KeepAFileForAMoment) {
  EXPECT_EQ(outputOf("17-files"),
            "birds.txt\na file, changed since 1970\nit holds bmlnaHRpbmdhbGU=\n"
            "removed: the server answers -32600\n");
}

TEST(ManagementExamples, ListThreadsNewestFirst) {
  EXPECT_THAT(outputOf("09-list-threads"), MatchesRegex("[0-9a-f-]+  And which fish[?]\n[0-9a-f-]+  Birds\n"));
}

TEST(ManagementExamples, ManageAThreadAndWatch) {
  EXPECT_EQ(outputOf("10-control-session"),
            "The server calls it Birds\nnamed Birds\narchived\ntaken out of the archive\ndeleted\n");
}

}  // namespace
}  // namespace ormel
