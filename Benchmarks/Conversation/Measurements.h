#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace ormel::benchmarks {

/// The same work by the library and by its yardstick, taken alternately; medians.
struct Pair {
  double measured;
  double yardstick;

  double ratio() const { return measured / yardstick; }
};

double median(std::vector<double> values);

/// The medians of so many rounds, taken alternately.
Pair medians(int rounds, const std::function<double()>& measured, const std::function<double()>& yardstick);

/// The resources that this process holds.
double residentBytes();

/// Events a second that reach a consumer of a `Thread` whose server writes blocks of lines, and lines a second that
/// splitting and decoding alone reach on one thread.
Pair measureEventsOfBlocks(std::uint64_t lines, int rounds);

/// Events a second from a server that makes one write of each line, and lines a second that reading them without
/// looking at them reaches.
Pair measureEventsOfLines(std::uint64_t lines, int rounds);

/// Nanoseconds from a server's write to the consumer with everything asleep before, and to a reader blocked on the
/// pipe.
Pair measureLatency(std::uint64_t lines, int rounds);

/// Nanoseconds of a whole empty turn on a live process, and of one that has to start the process.
Pair measureTurns(int rounds);

/// Microseconds of turns with so many and with a quarter of so many bytes of one command's output.
Pair measureCommandOutput(std::uint64_t bytes, int rounds);

/// Largest resident size of a process that consumes such a turn and keeps nothing, in bytes. To be called before
/// anything else: a child counts the peak of its parent as its own.
std::size_t measurePeakOfCommandOutput(const char* thisProgram, std::uint64_t bytes);

/// The work of the process that `measurePeakOfCommandOutput` starts: consumes one turn with this prompt.
void consumeTurn(const std::string& workload);

}  // namespace ormel::benchmarks
