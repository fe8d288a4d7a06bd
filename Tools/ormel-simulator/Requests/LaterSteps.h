#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <utility>

namespace ormel::simulator {

/// The agent's steps a while after it has answered a request. Single-threaded.
class LaterSteps {
 public:
  using Clock = std::chrono::steady_clock;

  /// Steps of the same moment are done in the order in which they were added.
  void after(std::chrono::milliseconds delay, std::function<void()> step) {
    steps_.emplace(Clock::now() + delay, std::move(step));
  }

  /// The moment of the next step, if there is one.
  std::optional<Clock::time_point> due() const {
    return steps_.empty() ? std::nullopt : std::optional(steps_.begin()->first);
  }

  /// Does one step that is due. False if there is none.
  bool doOne(Clock::time_point now) {
    if (steps_.empty() || steps_.begin()->first > now) return false;
    const std::function<void()> step = std::move(steps_.begin()->second);
    steps_.erase(steps_.begin());
    step();
    return true;
  }

 private:
  std::multimap<Clock::time_point, std::function<void()>> steps_;
};

}  // namespace ormel::simulator
