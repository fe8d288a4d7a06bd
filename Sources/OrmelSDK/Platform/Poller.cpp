#include "OrmelSDK/Platform/Poller.h"

#include <errno.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <system_error>

#if defined(__linux__)
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#else
#include <sys/event.h>
#endif

namespace ormel::detail {

namespace {

constexpr std::size_t eventsPerWait = 64;
constexpr std::uint64_t keyOfWakeUp = 0;

[[noreturn]] void failToPoll() { throw std::system_error(errno, std::generic_category()); }

timespec timeSpan(std::chrono::nanoseconds span) noexcept {
  constexpr std::chrono::seconds longest = std::chrono::hours(24);
  const auto bounded = std::clamp<std::chrono::nanoseconds>(span, std::chrono::nanoseconds(0), longest);
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(bounded);
  timespec time{};
  time.tv_sec = static_cast<decltype(time.tv_sec)>(seconds.count());
  time.tv_nsec = static_cast<decltype(time.tv_nsec)>((bounded - seconds).count());
  return time;
}

}  // namespace

#if defined(__linux__)

namespace {

epoll_event eventOf(std::uint64_t key, Interest interest) noexcept {
  epoll_event event{};
  event.events = EPOLLET;
  if (interest == Interest::reading) event.events |= EPOLLIN;
  if (interest == Interest::writing) event.events |= EPOLLOUT;
  event.data.u64 = key;
  return event;
}

/// Kernels before 5.11 know milliseconds only.
int waitInMilliseconds(int queue, std::span<epoll_event> events, const timespec* time) noexcept {
  int milliseconds = -1;
  if (time) milliseconds = static_cast<int>(time->tv_sec * 1000 + (time->tv_nsec + 999'999) / 1'000'000);
  return ::epoll_wait(queue, events.data(), static_cast<int>(events.size()), milliseconds);
}

int waitPrecisely(int queue, std::span<epoll_event> events, const timespec* time) noexcept {
  const bool needsNoPrecision = !time || (time->tv_sec == 0 && time->tv_nsec == 0);
  if (needsNoPrecision) return waitInMilliseconds(queue, events, time);
  const auto count =
      ::syscall(SYS_epoll_pwait2, queue, events.data(), static_cast<int>(events.size()), time, nullptr, 0);
  if (count < 0 && errno != EINTR) return waitInMilliseconds(queue, events, time);
  return static_cast<int>(count);
}

}  // namespace

Poller::Poller() : queue_(::epoll_create1(EPOLL_CLOEXEC)), wakeUp_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!queue_.isOpen() || !wakeUp_.isOpen()) failToPoll();
  // Nobody reads the counter: each addition to it is a change.
  epoll_event event = eventOf(keyOfWakeUp, Interest::reading);
  if (::epoll_ctl(queue_.number(), EPOLL_CTL_ADD, wakeUp_.number(), &event) != 0) failToPoll();
}

int Poller::add(int descriptor, std::uint64_t key) noexcept {
  epoll_event event = eventOf(key, Interest::nothing);
  return ::epoll_ctl(queue_.number(), EPOLL_CTL_ADD, descriptor, &event) == 0 ? 0 : errno;
}

int Poller::change(int descriptor, std::uint64_t key, Interest interest) noexcept {
  epoll_event event = eventOf(key, interest);
  return ::epoll_ctl(queue_.number(), EPOLL_CTL_MOD, descriptor, &event) == 0 ? 0 : errno;
}

void Poller::remove(int descriptor) noexcept { ::epoll_ctl(queue_.number(), EPOLL_CTL_DEL, descriptor, nullptr); }

std::size_t Poller::wait(std::span<PollEvent> events, std::chrono::nanoseconds atMost) noexcept {
  std::array<epoll_event, eventsPerWait> told;
  const timespec time = timeSpan(atMost);
  const auto room = std::span(told).first(std::min(events.size(), told.size()));
  const int count = waitPrecisely(queue_.number(), room, atMost == forEver ? nullptr : &time);
  std::size_t written = 0;
  for (int index = 0; index < count; ++index) {
    const epoll_event& event = told[static_cast<std::size_t>(index)];
    if (event.data.u64 == keyOfWakeUp) continue;
    events[written++] = {event.data.u64, (event.events & (EPOLLHUP | EPOLLERR)) != 0};
  }
  return written;
}

void Poller::wakeUp() noexcept {
  const std::uint64_t one = 1;
  [[maybe_unused]] const auto ignored = ::write(wakeUp_.number(), &one, sizeof one);
}

#else

namespace {

int applyChange(int queue, const struct kevent& change) noexcept {
  return ::kevent(queue, &change, 1, nullptr, 0, nullptr) == 0 ? 0 : errno;
}

struct kevent changeOf(std::uintptr_t descriptor, int filter, int flags, std::uint64_t key) noexcept {
  struct kevent change{};
  EV_SET(&change, descriptor, static_cast<std::int16_t>(filter), static_cast<std::uint16_t>(flags), 0, 0,
         reinterpret_cast<void*>(static_cast<std::uintptr_t>(key)));
  return change;
}

}  // namespace

Poller::Poller() : queue_(::kqueue()) {
  if (!queue_.isOpen()) failToPoll();
  if (applyChange(queue_.number(), changeOf(keyOfWakeUp, EVFILT_USER, EV_ADD | EV_CLEAR, keyOfWakeUp)) != 0)
    failToPoll();
}

int Poller::add(int, std::uint64_t) noexcept { return 0; }

int Poller::change(int descriptor, std::uint64_t key, Interest interest) noexcept {
  const auto number = static_cast<std::uintptr_t>(descriptor);
  if (interest == Interest::nothing) return remove(descriptor), 0;
  const int filter = interest == Interest::reading ? EVFILT_READ : EVFILT_WRITE;
  return applyChange(queue_.number(), changeOf(number, filter, EV_ADD | EV_CLEAR, key));
}

void Poller::remove(int descriptor) noexcept {
  const auto number = static_cast<std::uintptr_t>(descriptor);
  applyChange(queue_.number(), changeOf(number, EVFILT_READ, EV_DELETE, 0));
  applyChange(queue_.number(), changeOf(number, EVFILT_WRITE, EV_DELETE, 0));
}

std::size_t Poller::wait(std::span<PollEvent> events, std::chrono::nanoseconds atMost) noexcept {
  std::array<struct kevent, eventsPerWait> told;
  const timespec time = timeSpan(atMost);
  const auto room = static_cast<int>(std::min(events.size(), told.size()));
  const int count = ::kevent(queue_.number(), nullptr, 0, told.data(), room, atMost == forEver ? nullptr : &time);
  std::size_t written = 0;
  for (int index = 0; index < count; ++index) {
    const struct kevent& event = told[static_cast<std::size_t>(index)];
    if (event.filter == EVFILT_USER) continue;
    const auto key = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(event.udata));
    events[written++] = {key, (event.flags & (EV_EOF | EV_ERROR)) != 0};
  }
  return written;
}

void Poller::wakeUp() noexcept {
  struct kevent change = changeOf(keyOfWakeUp, EVFILT_USER, 0, keyOfWakeUp);
  change.fflags = NOTE_TRIGGER;
  applyChange(queue_.number(), change);
}

#endif

}  // namespace ormel::detail
