#pragma once

#include <chrono>

#include "Measurements.h"

namespace ormel::benchmarks {

/// Empty turns a second of so many conversations, each with a server process of its own: all at once, and one after
/// the other.
Pair measureConversationsAtOnce(int conversations, int rounds);

/// Microseconds of processor time that this process takes in that time for so many conversations at rest between two
/// turns, and how many count as none: a millisecond a minute, which leaves room for the measuring thread itself.
Pair measureIdleConversations(int conversations, std::chrono::seconds time);

}  // namespace ormel::benchmarks
