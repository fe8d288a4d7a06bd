#pragma once

#include <time.h>

#include <cstdint>
#include <string>

namespace ormel::benchmarks {

inline const std::string threadID = "0199a213-81c0-7800-8aa1-bbab2a035a53";
inline const std::string turnID = "0199a213-8243-7a51-9c2d-6b6f3c1d8e4f";

/// A notification of the conversation, with its ids and the given rest of its members.
inline std::string notification(const std::string& method, const std::string& members) {
  return R"({"method":")" + method + R"(","params":{"threadId":")" + threadID + R"(","turnId":")" + turnID + "\"," +
         members + "}}\n";
}

/// The clock that both processes read.
inline std::uint64_t monotonicNanoseconds() {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000 + static_cast<std::uint64_t>(now.tv_nsec);
}

/// A warning whose message is a time.
inline std::string clockLine(std::uint64_t nanoseconds) {
  return notification("warning", R"("message":")" + std::to_string(nanoseconds) + '"');
}

/// The text in one piece of a command's output.
inline constexpr std::uint64_t commandOutputBytes = 4096;

inline std::string commandStartedLine() {
  return notification(
      "item/started",
      R"("item":{"type":"commandExecution","id":"c1","command":"make","cwd":"/","status":"inProgress"})");
}

inline std::string commandOutputLine() {
  constexpr std::uint64_t bytesOfLine = 64;
  std::string text;
  for (std::uint64_t size = 0; size < commandOutputBytes; size += bytesOfLine) {
    text += std::string(bytesOfLine - 1, 'x') + "\\n";
  }
  return notification("item/commandExecution/outputDelta", R"("itemId":"c1","delta":")" + text + '"');
}

}  // namespace ormel::benchmarks
