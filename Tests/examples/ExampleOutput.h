#pragma once

#include <gtest/gtest.h>

#include <string>

#include "Support/ChildProgram.h"
#include "Support/SimulatorScenario.h"
#include "Support/TemporaryDirectory.h"

namespace ormel::testing {

/// The output of the example, talking with the simulator's agent.
inline std::string outputOf(const std::string& example, const std::string& server = SimulatorScenario::executable()) {
  const TemporaryDirectory state;
  ChildOptions options;
  options.arguments = {server};
  options.environment = {"ORMEL_SIMULATOR_PACE_MS=1", "ORMEL_SIMULATOR_STATE=" + state.path().string()};
  ChildProgram child(ORMEL_EXAMPLES_FOLDER "/" + example, options);
  child.closeInput();
  std::string output = child.readRestOfOutput();
  const std::string errors = child.readErrors();
  const auto status = child.wait().status;
  EXPECT_EQ(errors, "");
  EXPECT_EQ(status, 0) << output;
  return output;
}

}  // namespace ormel::testing
