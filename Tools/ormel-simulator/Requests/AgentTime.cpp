#include "ormel-simulator/Requests/AgentTime.h"

#include <chrono>

namespace ormel::simulator {

double secondsNow() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  constexpr double microsecondsOfSecond = 1e6;
  return static_cast<double>(std::chrono::duration_cast<std::chrono::microseconds>(now).count()) / microsecondsOfSecond;
}

}  // namespace ormel::simulator
