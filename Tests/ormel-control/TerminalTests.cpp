#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/SimulatorScenario.h"
#include "ormel-chat/TmuxTerminal.h"

namespace ormel::control {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

/// Two threads whose titles are longer than any terminal here, one of them in wide characters with marks.
constexpr const char* longTitles = R"(
  always answer initialize with {}
  always ignore initialized
  always answer thread/list with {"data": [
    {"id": "0199a213-81c0-7800-8aa1-bbab2a035a53", "cwd": "/home/user/a/directory/with/a/long/name",
     "name": "words words words words words words words words words words words words words words words words words words words words words words words words words words words words words words words words words words"},
    {"id": "t2",
     "name": "日本語の題名e\u0301日本語の題名e\u0301日本語の題名e\u0301日本語の題名e\u0301日本語の題名e\u0301日本語の題名e\u0301日本語の題名e\u0301日本語の題名e\u0301日本語の題名e\u0301日本語の題名e\u0301日本語の題名e\u0301日本語の題名e\u0301日本語の題名"},
    {"id": "t3", "name": "\u001b[2J\u009b2Jsteers"}]}
)";

std::string command(const testing::SimulatorScenario& scenario, const std::string& arguments) {
  std::string variables;
  for (const std::string& variable : scenario.environment()) variables += variable + " ";
  return "env -u COLUMNS LC_ALL=C.UTF-8 " + variables + ORMEL_CONTROL_EXECUTABLE " --server " +
         testing::SimulatorScenario::executable() + " " + arguments;
}

TEST(ControlInATerminal, HasTablesThatFit) {
  for (const int width : {20, 40, 80, 200}) {
    const testing::SimulatorScenario scenario(longTitles);
    const chat::TmuxTerminal terminal("echo ready; read line; " + command(scenario, "threads"));
    ASSERT_TRUE(terminal.shows("ready"));
    terminal.resize(width, 24);
    terminal.press("Enter");
    ASSERT_TRUE(terminal.shows("ended with 0")) << terminal.text();
    // A line that does not fit would be joined from two, so that the table had fewer lines on the screen than here.
    EXPECT_EQ(terminal.text(), terminal.unjoinedText()) << width;
    EXPECT_THAT(terminal.text(), HasSubstr("…")) << width;
    EXPECT_THAT(terminal.text(), HasSubstr("t3")) << width;
    if (width >= 80) {
      EXPECT_THAT(terminal.text(), HasSubstr("0199a213-81c0-7800-8aa1-bbab2a035a53")) << width;
      EXPECT_THAT(terminal.text(), HasSubstr("\\u001b[2")) << width;
    }
  }
}

TEST(ControlInATerminal, EndsByControlC) {
  const testing::SimulatorScenario scenario(R"(
    always answer initialize with {}
    always ignore initialized
    client asks model/list
    wait until killed
  )");
  const chat::TmuxTerminal terminal(command(scenario, "models"));
  ASSERT_TRUE(scenario.waitForMethod("model/list"));
  terminal.press("C-c");
  EXPECT_TRUE(terminal.shows("ended with 130")) << terminal.text();
}

}  // namespace
}  // namespace ormel::control
