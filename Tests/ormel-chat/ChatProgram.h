#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Support/ChildProgram.h"
#include "Support/SimulatorScenario.h"
#include "Support/TemporaryDirectory.h"

namespace ormel::chat {

struct ChatEnd {
  int status = -1;
  std::string output;
  std::string errors;
};

/// The environment of a chat with the simulator's agent.
inline std::vector<std::string> chatEnvironment() { return {"ORMEL_SIMULATOR_PACE_MS=1", "TERM=xterm", "PATH=/bin"}; }

/// A real `ormel-chat` with pipes on its streams, which talks with the simulator. Unless the environment says where the
/// simulator keeps its threads, that is a folder of this program's own.
class ChatProgram {
 public:
  explicit ChatProgram(std::vector<std::string> arguments, std::vector<std::string> environment = chatEnvironment())
      : child_(ORMEL_CHAT_EXECUTABLE, options(std::move(arguments), std::move(environment), state_.path().string())) {}

  testing::ChildProgram& child() { return child_; }

  /// Gives it the rest of its input, and what has come of it.
  ChatEnd finish(std::string_view input = "") {
    child_.write(input);
    child_.closeInput();
    return end();
  }

  /// Waits for an end that it makes by itself.
  ChatEnd end() {
    ChatEnd end;
    end.output = child_.readRestOfOutput();
    end.errors = child_.readErrors();
    end.status = child_.wait().status.value_or(-1);
    return end;
  }

 private:
  static testing::ChildOptions options(std::vector<std::string> arguments, std::vector<std::string> environment,
                                       const std::string& state) {
    testing::ChildOptions options;
    options.arguments = {"--server", testing::SimulatorScenario::executable()};
    options.arguments.insert(options.arguments.end(), arguments.begin(), arguments.end());
    options.environment = std::move(environment);
    const bool hasState =
        std::any_of(options.environment.begin(), options.environment.end(),
                    [](const std::string& variable) { return variable.starts_with("ORMEL_SIMULATOR_STATE="); });
    if (!hasState) options.environment.push_back("ORMEL_SIMULATOR_STATE=" + state);
    return options;
  }

  testing::TemporaryDirectory state_;
  testing::ChildProgram child_;
};

inline ChatEnd chat(std::vector<std::string> arguments, std::string_view input = "") {
  return ChatProgram(std::move(arguments)).finish(input);
}

}  // namespace ormel::chat
