#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ormel-control/ControlProgram.h"
#include "ormel-control/ServerScript.h"

namespace ormel::control {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* silentServer = R"(
  always answer initialize with {}
  always ignore initialized
  client asks model/list
  wait until killed
)";

TEST(ControlFailures, AreOneSentenceAndAnAdvice) {
  const testing::SimulatorScenario scenario(R"(
    always answer initialize with {}
    always ignore initialized
    client asks model/list
    server answers with error {"code": -32601, "message": "Method not\nfound\u001b[31m"}
  )");
  for (const bool json : {false, true}) {
    const ControlEnd end =
        control(json ? std::vector<std::string>{"models", "--json"} : std::vector<std::string>{"models"}, scenario);
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.output, "");
    EXPECT_THAT(end.errors, AllOf(StartsWith("ormel-control: "), HasSubstr("Method not\\nfound\\u001b[31m")));
    EXPECT_EQ(std::count(end.errors.begin(), end.errors.end(), '\n'), 2);
    EXPECT_THAT(end.errors, HasSubstr("\nThe server does not know this call"));
  }
}

TEST(ControlFailures, OfTheServerAreTold) {
  const testing::SimulatorScenario scenario(R"(
    always answer initialize with {}
    always ignore initialized
    client asks model/list
    server writes stderr "out of memory\n"
    server exits 3
  )");
  const ControlEnd end = control({"models"}, scenario);
  EXPECT_EQ(end.status, 1);
  EXPECT_THAT(end.errors, HasSubstr("out of memory"));
}

TEST(ControlFailures, OfTheCommandLineAreUsageErrors) {
  const Agent agent;
  const std::vector<std::string> rows[] = {{},
                                           {"nonsense"},
                                           {"models", "--nonsense"},
                                           {"models", "superfluous"},
                                           {"thread"},
                                           {"thread", "read"},
                                           {"thread", "rename", "t"},
                                           {"thread", "read", "a", "b"},
                                           {"config", "set", "a"},
                                           {"config", "set", "a", "{no json"},
                                           {"call"},
                                           {"call", "a", "high"},
                                           {"exec"},
                                           {"exec", "--"},
                                           {"exec", "--timeout", "0", "--", "ls"},
                                           {"exec", "--timeout", "x", "--", "ls"},
                                           {"files", "ls"},
                                           {"completion"},
                                           {"completion", "tcsh"},
                                           {"--cd", "/nowhere", "models"}};
  for (const auto& arguments : rows) {
    const ControlEnd end = agent.control(arguments);
    EXPECT_EQ(end.status, 2) << ::testing::PrintToString(arguments);
    EXPECT_EQ(end.output, "") << ::testing::PrintToString(arguments);
    EXPECT_NE(end.errors, "") << ::testing::PrintToString(arguments);
  }
}

TEST(ControlFailures, AreNotHelp) {
  const Agent agent;
  const ControlEnd end = agent.control({"--help"});
  EXPECT_EQ(end.status, 0);
  for (const char* word : {"models",  "threads",    "thread",   "skills",      "hooks",    "apps",  "mcp",  "plugins",
                           "account", "usage",      "config",   "permissions", "features", "files", "exec", "call",
                           "watch",   "completion", "--server", "--ormel",     "--json",   "--cd"}) {
    EXPECT_THAT(end.output, HasSubstr(word));
  }
  EXPECT_EQ(agent.control({"thread", "rename", "--help"}).status, 0);
}

TEST(ControlFailures, IncludeAServerThatIsNone) {
  testing::ChildOptions options;
  options.arguments = {"--ormel", "/nowhere/ormel", "models"};
  testing::ChildProgram child(ORMEL_CONTROL_EXECUTABLE, options);
  EXPECT_THAT(child.readErrors(), AllOf(StartsWith("ormel-control: /nowhere/ormel is no executable file\n"),
                                        HasSubstr("\nFound: no such file")));
  EXPECT_EQ(child.wait().status, 1);
}

TEST(ControlFailures, DoNotIncludeTheLackOfAServerWhileTheSimulatorIsThere) {
  const testing::TemporaryDirectory state;
  testing::ChildOptions options;
  options.arguments = {"models", "--json"};
  options.environment = {"PATH=/nowhere", "HOME=/nowhere", "ORMEL_SIMULATOR_STATE=" + state.path().string()};
  testing::ChildProgram child(ORMEL_CONTROL_EXECUTABLE, options);
  EXPECT_THAT(child.readRestOfOutput(), StartsWith("["));
  EXPECT_THAT(child.readErrors(), HasSubstr("this is ormel-simulator"));
  EXPECT_EQ(child.wait().status, 0);
}

TEST(ControlFailures, IncludeAClosedOutput) {
  testing::ChildOptions options;
  options.arguments = {"--server", testing::SimulatorScenario::executable(), "models"};
  options.closedStreams = {1};
  testing::ChildProgram child(ORMEL_CONTROL_EXECUTABLE, options);
  EXPECT_EQ(child.readErrors(), "ormel-control: There is no standard output to write to.\n");
  EXPECT_EQ(child.wait().status, 1);
}

TEST(ControlFailures, DoNotIncludeAReaderWhoHasHadEnough) {
  const Agent agent;
  ControlProgram program({"models"}, agent.environment());
  program.child().closeOutput();
  EXPECT_EQ(program.child().readErrors(), "");
  EXPECT_EQ(program.child().wait().status, 0);
}

TEST(ControlSignals, EndACallAndItsServer) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const testing::SimulatorScenario scenario(silentServer);
    const ServerScript server;
    ControlProgram program({"--server", server.path(), "models"}, scenario.environment());
    ASSERT_TRUE(scenario.waitForMethod("model/list"));
    ::kill(program.child().processID(), signal);
    const ControlEnd end = program.end();
    EXPECT_EQ(end.status, 128 + signal);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "");
    EXPECT_TRUE(server.hasEnded());
  }
}

TEST(ControlSignals, EndTheOutputToAReaderWhoDoesNotRead) {
  const testing::SimulatorScenario scenario(
      "always answer initialize with {}\nalways ignore initialized\nclient asks call/one\nserver answers \"" +
      std::string(1 << 20, 'x') + "\"\n");
  const ServerScript server;
  ControlProgram program({"--server", server.path(), "call", "call/one"}, scenario.environment());
  testing::awaitReadable(program.child().outputDescriptor());
  ::kill(program.child().processID(), SIGINT);
  EXPECT_EQ(program.child().wait().signal, SIGINT);
  EXPECT_TRUE(server.hasEnded());
}

}  // namespace
}  // namespace ormel::control
