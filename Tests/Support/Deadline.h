#pragma once

#include <chrono>
#include <future>
#include <thread>
#include <utility>

namespace ormel::testing {

/// Far longer than anything that is waited for takes, and shorter than the limit of the test runner.
inline constexpr std::chrono::seconds generousDeadline{60};

/// Runs `work` on a thread of its own and tells whether it came to its end in time. Work that did not is abandoned
/// with its thread, so it must own what it uses.
template <typename Work>
bool endsInTime(Work work) {
  std::packaged_task<void()> task(std::move(work));
  auto ended = task.get_future();
  std::thread(std::move(task)).detach();
  if (ended.wait_for(generousDeadline) != std::future_status::ready) return false;
  ended.get();
  return true;
}

}  // namespace ormel::testing
