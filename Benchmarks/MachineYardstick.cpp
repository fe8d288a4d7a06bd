// Prints how fast this machine is at the moment: the nanoseconds in which simdjson parses and walks the 253-byte line
// that all benchmarks use. Needs nothing of the library, so that it is compiled in seconds.

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>

#include "JSONSamples.h"
#include "SimdjsonWalk.h"

int main() {
  constexpr int rounds = 30;
  constexpr int linesInARound = 20000;
  const simdjson::padded_string line(ormel::benchmarks::notificationLine());
  simdjson::dom::parser parser;
  std::size_t seen = 0;
  double fastest = 1e9;
  for (int round = 0; round < rounds; ++round) {
    const auto start = std::chrono::steady_clock::now();
    for (int count = 0; count < linesInARound; ++count) {
      seen += ormel::benchmarks::walk(parser.parse(line).value_unsafe());
    }
    const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - start;
    fastest = std::min(fastest, taken.count() / linesInARound);
  }
  if (seen == 0) return 1;
  std::printf("%.0f\n", fastest);
}
