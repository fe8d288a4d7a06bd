#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

namespace ormel::benchmarks {

/// Repeats a benchmark and reports its fastest repetition: on a shared machine the minimum is what the code costs,
/// and everything above it is the neighbours.
inline void reportFastest(benchmark::internal::Benchmark* benchmark) {
  constexpr int repetitions = 12;
  benchmark->Repetitions(repetitions)
      ->ReportAggregatesOnly()
      ->MinTime(0.05)
      ->ComputeStatistics(
          "min", [](const std::vector<double>& times) { return *std::min_element(times.begin(), times.end()); });
}

}  // namespace ormel::benchmarks
