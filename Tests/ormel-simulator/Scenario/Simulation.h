#pragma once

#include <string>
#include <string_view>

#include "Support/ChildProgram.h"
#include "Support/SimulatorScenario.h"

namespace ormel::simulator {

/// The real simulator, playing a scenario over real pipes.
class Simulation {
 public:
  explicit Simulation(std::string_view text)
      : scenario_(text), child_(testing::SimulatorScenario::executable(), options(scenario_)) {}

  const testing::SimulatorScenario& scenario() const { return scenario_; }
  testing::ChildProgram& child() { return child_; }

  void send(std::string_view line) { child_.write(std::string(line).append("\n")); }

  /// The next line of the server, as a value.
  JSONValue receive() { return JSONValue::decode(child_.readLine()); }

  /// Closes the input and waits; the exit status, or minus the signal.
  int finish() {
    child_.closeInput();
    return end();
  }

  /// Waits for the end that the simulator makes by itself.
  int end() {
    const testing::ChildEnd end = child_.wait();
    return end.status ? *end.status : -end.signal.value_or(0);
  }

  std::string failureText() const {
    const auto failures = scenario_.failures();
    return failures.empty() ? "" : failures.front();
  }

  /// The text of a failed expectation at that line.
  std::string failureAt(int line, std::string_view expected, std::string_view received, std::string_view reason) const {
    std::string text = scenario_.path().string();
    if (line > 0) text.append(":").append(std::to_string(line));
    text.append(": the scenario does not go on as written\n  expected: ").append(expected);
    text.append("\n  received: ").append(received).append("\n  because:  ").append(reason);
    return text;
  }

 private:
  static testing::ChildOptions options(const testing::SimulatorScenario& scenario) {
    testing::ChildOptions options;
    options.arguments = testing::SimulatorScenario::serverArguments();
    options.environment = scenario.environment();
    return options;
  }

  testing::SimulatorScenario scenario_;
  testing::ChildProgram child_;
};

/// The text with its one "%" replaced by the number.
inline std::string numbered(std::string text, int number) {
  return text.replace(text.find('%'), 1, std::to_string(number));
}

inline JSONValue json(std::string_view text) { return JSONValue::decode(text); }

}  // namespace ormel::simulator
