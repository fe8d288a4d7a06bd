#include "ormel-simulator/Scenario/Wire.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace ormel::simulator {

namespace {

int descriptor(Stream stream) { return static_cast<int>(stream); }

short pollOne(int file, short events, milliseconds longest) {
  pollfd entry = {file, events, 0};
  return ::poll(&entry, 1, static_cast<int>(longest.count())) > 0 ? entry.revents : static_cast<short>(0);
}

void writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
      pollOne(file, POLLOUT, milliseconds(1000));
    } else if (errno != EINTR) {
      throw std::system_error(errno, std::generic_category());
    }
  }
}

}  // namespace

void Wire::pump(milliseconds longest, std::span<const pollfd> others) {
  // The system passes a negative descriptor over, and the wait for nothing is a pause.
  std::vector<pollfd> entries = {{inputEnded_ ? -1 : descriptor(Stream::input), POLLIN, 0}};
  entries.insert(entries.end(), others.begin(), others.end());
  const int ready = ::poll(entries.data(), static_cast<nfds_t>(entries.size()), static_cast<int>(longest.count()));
  if (ready > 0 && entries.front().revents != 0) readInput();
}

void Wire::readInput() {
  std::array<char, 65536> chunk;
  const ssize_t count = ::read(descriptor(Stream::input), chunk.data(), chunk.size());
  if (count > 0) {
    splitLines({chunk.data(), static_cast<std::size_t>(count)});
  } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
    endInput();
  }
}

void Wire::splitLines(std::string_view bytes) {
  while (true) {
    const std::size_t end = bytes.find('\n');
    partialLine_.append(bytes.substr(0, end));
    if (end == std::string_view::npos) return;
    lines_.push_back({std::exchange(partialLine_, {}), true});
    bytes.remove_prefix(end + 1);
  }
}

void Wire::endInput() {
  inputEnded_ = true;
  if (!partialLine_.empty()) lines_.push_back({std::exchange(partialLine_, {}), false});
}

std::optional<ReceivedLine> Wire::takeLine() {
  if (lines_.empty()) return std::nullopt;
  ReceivedLine line = std::move(lines_.front());
  lines_.pop_front();
  return line;
}

bool Wire::inputClosedUnread() const {
  return inputEnded_ || (pollOne(descriptor(Stream::input), 0, milliseconds(0)) & (POLLHUP | POLLNVAL)) != 0;
}

void Wire::write(Stream stream, std::string_view bytes) {
  if (inBurst_ && stream == Stream::output) {
    burst_.append(bytes);
  } else {
    writeAll(descriptor(stream), bytes);
  }
}

void Wire::endBurst() {
  inBurst_ = false;
  writeAll(descriptor(Stream::output), std::exchange(burst_, {}));
}

void Wire::waitUntilTaken(Stream stream, milliseconds longest) const {
  const auto deadline = std::chrono::steady_clock::now() + longest;
  int unread = 0;
  while (::ioctl(descriptor(stream), FIONREAD, &unread) == 0 && unread > 0 &&
         std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(milliseconds(1));
  }
}

void Wire::close(Stream stream) {
  ::close(descriptor(stream));
  if (stream == Stream::input) endInput();
}

}  // namespace ormel::simulator
