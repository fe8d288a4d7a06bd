#include "ormel-simulator/Agent/CannedCommand.h"

#include <array>
#include <string_view>

#include "ormel-simulator/Agent/InputText.h"

namespace ormel::simulator {

namespace {

struct CannedOutput {
  std::string_view program;
  std::string_view output;
  int exitCode;
};

constexpr std::array outputs = {
    CannedOutput{"ls", "README.md\nnotes.txt\nsrc\ntests\n", 0},
    CannedOutput{"pwd", "/work/project\n", 0},
    CannedOutput{"cat", "first line\nsecond line\n", 0},
    CannedOutput{"git", "On branch main\nnothing to commit, working tree clean\n", 0},
    CannedOutput{"make", "compiling main.cpp\nlinking program\n", 0},
    CannedOutput{"cmake", "-- Configuring done\n-- Generating done\n", 0},
    CannedOutput{"ctest", "100% tests passed, 0 tests failed out of 12\n", 0},
    CannedOutput{"npm", "12 passing\n", 0},
    CannedOutput{"false", "", 1},
};

}  // namespace

CannedResult cannedResult(const std::string& command) {
  const std::string program = command.substr(0, command.find(' '));
  if (program == "echo") return {trimmed(command.substr(program.size())) + "\n", 0};
  for (const CannedOutput& canned : outputs) {
    if (program == canned.program) return {std::string(canned.output), canned.exitCode};
  }
  return {"(" + command + " was not really run)\n", 0};
}

}  // namespace ormel::simulator
