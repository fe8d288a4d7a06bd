#pragma once

#include <poll.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "ormel-simulator/Scenario/Scenario.h"

namespace ormel::simulator {

struct ReceivedLine {
  std::string bytes;
  /// False for what was left when the input ended without a line feed.
  bool terminated = true;
};

/// The three standard streams. Failures of writing are `std::system_error`.
class Wire {
 public:
  /// Waits at most `longest` for input, and reads what is there. Does not wait on where one of the other descriptors is
  /// ready for what it is listed with.
  void pump(milliseconds longest, std::span<const pollfd> others = {});

  /// The next line that has been read.
  std::optional<ReceivedLine> takeLine();

  bool inputEnded() const noexcept { return inputEnded_; }

  /// Whether the client has closed its end, found out without reading.
  bool inputClosedUnread() const;

  /// Writes all of it, waiting for the client where its pipe is full.
  void write(Stream stream, std::string_view bytes);

  /// Waits at most `longest` until the client has taken everything that was written.
  void waitUntilTaken(Stream stream, milliseconds longest) const;

  /// Keeps what is written to standard output back, until `endBurst` writes it at once.
  void beginBurst() noexcept { inBurst_ = true; }
  void endBurst();

  void close(Stream stream);

 private:
  void readInput();
  void splitLines(std::string_view bytes);
  void endInput();

  std::deque<ReceivedLine> lines_;
  std::string partialLine_;
  std::string burst_;
  bool inBurst_ = false;
  bool inputEnded_ = false;
};

}  // namespace ormel::simulator
