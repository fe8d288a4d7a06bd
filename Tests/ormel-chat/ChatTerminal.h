#pragma once

#include <gtest/gtest.h>

#include <string>

#include "Support/SimulatorScenario.h"
#include "Support/TemporaryDirectory.h"
#include "ormel-chat/TmuxTerminal.h"

namespace ormel::chat {

inline std::string chatCommand(const std::string& arguments = "",
                               const std::string& environment = "TERM=screen-256color") {
  static const testing::TemporaryDirectory state;
  return "env -u NO_COLOR ORMEL_SIMULATOR_PACE_MS=5 ORMEL_SIMULATOR_STATE=" + state.path().string() + " " +
         environment + " " ORMEL_CHAT_EXECUTABLE " --server " + testing::SimulatorScenario::executable() + " " +
         arguments;
}

/// A conversation in a terminal, which waits for the first line.
class ChatTerminal : public TmuxTerminal {
 public:
  explicit ChatTerminal(const std::string& command = chatCommand()) : TmuxTerminal(command) {
    EXPECT_TRUE(shows("/help tells what you can do.\n\n▌ >")) << text();
  }

  void enter(const std::string& line) const {
    type(line);
    press("Enter");
  }
};

/// The environment of a conversation that follows the scenario.
inline std::string following(const testing::SimulatorScenario& scenario) {
  return "ORMEL_SIMULATOR_SCENARIO=" + scenario.path().string() +
         " ORMEL_SIMULATOR_RECORD=" + scenario.recordPath().string();
}

}  // namespace ormel::chat
