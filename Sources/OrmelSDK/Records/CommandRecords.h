#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include "OrmelSDK/Coding/RecordCoding.h"

// Every type here has a JSON form.
namespace ormel {

/// The size of a command's terminal, in characters.
struct CommandExecTerminalSize {
  std::int64_t rows = 0;
  std::int64_t cols = 0;
  friend bool operator==(const CommandExecTerminalSize&, const CommandExecTerminalSize&);
  friend std::ostream& operator<<(std::ostream& stream, const CommandExecTerminalSize& value);
};

/// How a command ended.
struct CommandExecResponse {
  std::int64_t exitCode = 0;
  std::string stdout;
  std::string stderr;
  friend bool operator==(const CommandExecResponse&, const CommandExecResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const CommandExecResponse& value);
};

}  // namespace ormel
