#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Support/ChildProgram.h"
#include "Support/SimulatorScenario.h"
#include "Support/TemporaryDirectory.h"

namespace ormel::control {

struct ControlEnd {
  int status = -1;
  std::string output;
  std::string errors;
};

/// A real `ormel-control` with pipes on its streams. Its server is the simulator unless the arguments begin with
/// another one.
class ControlProgram {
 public:
  explicit ControlProgram(std::vector<std::string> arguments, std::vector<std::string> environment)
      : child_(ORMEL_CONTROL_EXECUTABLE, options(std::move(arguments), std::move(environment))) {}

  testing::ChildProgram& child() { return child_; }

  ControlEnd end() {
    ControlEnd end;
    end.output = child_.readRestOfOutput();
    end.errors = child_.readErrors();
    end.status = child_.wait().status.value_or(-1);
    return end;
  }

 private:
  static testing::ChildOptions options(std::vector<std::string> arguments, std::vector<std::string> environment) {
    testing::ChildOptions options;
    const bool namesServer = !arguments.empty() && arguments.front() == "--server";
    if (!namesServer) options.arguments = {"--server", testing::SimulatorScenario::executable()};
    options.arguments.insert(options.arguments.end(), arguments.begin(), arguments.end());
    options.environment = std::move(environment);
    options.environment.push_back("PATH=/usr/bin:/bin");
    return options;
  }

  testing::ChildProgram child_;
};

/// Runs the program to its end, with a server that plays the scenario.
inline ControlEnd control(std::vector<std::string> arguments, const testing::SimulatorScenario& scenario) {
  return ControlProgram(std::move(arguments), scenario.environment()).end();
}

/// The simulator's agent, with a folder for what it keeps.
class Agent {
 public:
  std::vector<std::string> environment() const {
    return {"ORMEL_SIMULATOR_PACE_MS=0", "ORMEL_SIMULATOR_STATE=" + state_.path().string()};
  }
  ControlEnd control(std::vector<std::string> arguments) const {
    return ControlProgram(std::move(arguments), environment()).end();
  }

 private:
  testing::TemporaryDirectory state_;
};

}  // namespace ormel::control
