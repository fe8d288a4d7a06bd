#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace ormel::benchmarks {

/// The system does not let one process watch the system calls of another.
class SystemCallsAreHidden : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Runs a program with its arguments to its end and gives the number of system calls that its threads began; those of
/// its child processes do not count. Throws `SystemCallsAreHidden`, and `std::runtime_error` if the program fails.
double countSystemCallsOf(const std::vector<std::string>& command);

/// The process between, which is called with this word before the command: the counting reaps all children of its
/// process. Writes the number to standard output, and gives its exit status.
inline constexpr const char* countingWord = "--count-system-calls";
int countSystemCallsHere(char* const* command);

}  // namespace ormel::benchmarks
