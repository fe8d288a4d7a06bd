#pragma once

#include <cstdint>
#include <string>

#include "Measurements.h"

namespace ormel::benchmarks {

/// Nanoseconds of one request and its answer on a live process, awaited by a coroutine, and of a bare exchange of the
/// same lines over epoll.
Pair measureRoundTrip(std::uint64_t requests, int rounds);

/// The same, each request made by a blocking `get()` on a thread of the application.
Pair measureBlockingRoundTrip(std::uint64_t requests, int rounds);

/// Nanoseconds of the round trips, awaited and bare, that half of them and that 99 of 100 stay below.
struct RoundTripTimes {
  Pair half;
  Pair most;
};

RoundTripTimes measureRoundTripTimes(std::uint64_t requests, int rounds);

/// Bytes that this process holds before and after so many requests.
Pair measureMemoryOfRequests(std::uint64_t requests);

/// System calls of one round trip in the library's process, and in that of the bare exchange. Throws
/// `SystemCallsAreHidden` where the system does not let them be counted.
Pair countSystemCalls(const std::string& thisProgram, const std::string& manner, std::uint64_t requests);

/// The work of the processes whose system calls are counted: so many round trips, "awaited", "blocking" or "bare".
void makeRoundTrips(const std::string& manner, std::uint64_t requests);

}  // namespace ormel::benchmarks
