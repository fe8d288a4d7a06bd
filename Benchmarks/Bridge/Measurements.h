#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ormel::benchmarks {

/// The same measurement of both programs, taken alternately; medians.
struct Comparison {
  double bridgeMicroseconds;
  double relayMicroseconds;

  double timeRatio() const { return bridgeMicroseconds / relayMicroseconds; }
  double rateRatio() const { return relayMicroseconds / bridgeMicroseconds; }
};

/// Round trips of one request and its result through both programs.
Comparison measureRoundTrips(std::string_view request, std::string_view result, int batches, int exchangesPerBatch);

/// The time from just before a program is started to its connection being accepted.
Comparison measureStarts(int starts);

/// Largest resident size of a bridge that has passed one reply of `size` bytes on, in bytes. The reply is `head`,
/// repetitions of `piece`, and white space up to `tail`.
std::size_t measurePeakMemory(std::size_t size, const std::string& head, const std::string& piece,
                              const std::string& tail);

}  // namespace ormel::benchmarks
