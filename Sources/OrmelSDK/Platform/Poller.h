#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>

#include "OrmelSDK/Platform/FileDescriptor.h"

namespace ormel::detail {

/// A change of a watched descriptor.
struct PollEvent {
  std::uint64_t key = 0;
  /// The other end is closed: there is nothing to wait for after what is there.
  bool hungUp = false;
};

/// The changes that a descriptor is watched for.
enum class Interest { nothing, reading, writing };

/// Waits for descriptors: epoll on Linux, kqueue elsewhere. An event is told once for each change ("edge-triggered"),
/// so nothing has to be armed again, and a descriptor on which nobody acts costs nothing.
///
/// *Thread safety*: all members may be called from any thread.
class Poller {
 public:
  /// Fails with `std::system_error`.
  Poller();
  Poller(const Poller&) = delete;
  Poller& operator=(const Poller&) = delete;

  /// Begins to watch a descriptor for nothing. The key comes back with each event. Gives 0 or an `errno`.
  int add(int descriptor, std::uint64_t key) noexcept;
  /// Changes what a descriptor is watched for. If it is there already, that is told as an event. Gives 0 or an `errno`.
  int change(int descriptor, std::uint64_t key, Interest interest) noexcept;
  /// To be called before the descriptor is closed. Events that another thread has already been given may still come.
  void remove(int descriptor) noexcept;

  static constexpr std::chrono::nanoseconds forEver = std::chrono::nanoseconds::max();

  /// Waits for events, for `wakeUp`, or for the time to pass; not at all for a time of zero. Gives the number of
  /// events.
  std::size_t wait(std::span<PollEvent> events, std::chrono::nanoseconds atMost) noexcept;

  /// A descriptor that is readable while a `wait` would not block.
  int descriptor() const noexcept { return queue_.number(); }

  /// Ends the present `wait`, or the next one if there is none.
  void wakeUp() noexcept;

 private:
  FileDescriptor queue_;
#if defined(__linux__)
  FileDescriptor wakeUp_;
#endif
};

}  // namespace ormel::detail
