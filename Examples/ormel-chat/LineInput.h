#pragma once

#include <deque>
#include <optional>
#include <string>

namespace ormel::chat {

/// Standard input, a line at a time, without waiting.
class LineInput {
 public:
  LineInput();

  bool isTerminal() const noexcept { return isTerminal_; }

  /// Whether a line is there.
  bool hasLine() const noexcept { return !lines_.empty(); }
  const std::string& line() const { return lines_.front(); }
  std::string takeLine();

  /// Whether all lines were taken and no more will come.
  bool isAtEnd() const noexcept { return ended_ && lines_.empty(); }

  /// The descriptor to poll, or -1 when there is nothing to read: `poll` ignores a negative one. Lines that a script
  /// has written beforehand stay in the pipe until the lines before them are dealt with.
  int descriptor() const noexcept { return ended_ || (!isTerminal_ && hasLine()) ? -1 : 0; }

  /// Reads what is there; called when the descriptor is ready.
  void readAvailable();

 private:
  std::deque<std::string> lines_;
  std::string partial_;
  bool ended_ = false;
  bool isTerminal_;
};

/// Keeps what is typed off the screen as long as it lives.
class HiddenTyping {
 public:
  HiddenTyping();
  HiddenTyping(const HiddenTyping&) = delete;
  HiddenTyping& operator=(const HiddenTyping&) = delete;
  ~HiddenTyping();

 private:
  bool hidden_ = false;
};

}  // namespace ormel::chat
