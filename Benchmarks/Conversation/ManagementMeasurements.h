#pragma once

#include "Measurements.h"

namespace ormel::benchmarks {

/// Nanoseconds of a one-shot call, and of starting the same server as the library does, shaking hands, asking the same
/// and ending it, by blocking calls.
Pair measureOneShotCall(int rounds);

/// Nanoseconds of a call on a session, awaited one after the other, and of a bare exchange of the same lines.
Pair measureSessionCall(std::uint64_t calls, int rounds);

/// Nanoseconds of 64 calls in flight at once on a session, and of 64 calls one after the other.
Pair measureCallsInFlight(int rounds);

/// Bytes that this process holds after so many sessions with a call each, and before. Fails if a descriptor, a thread
/// or a child is left.
Pair measureMemoryOfSessions(int sessions);

}  // namespace ormel::benchmarks
