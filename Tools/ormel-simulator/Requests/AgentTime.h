#pragma once

namespace ormel::simulator {

/// Seconds since the epoch, so fine that what happens one after the other can be told apart.
double secondsNow();

}  // namespace ormel::simulator
