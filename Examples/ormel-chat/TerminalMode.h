#pragma once

#include <termios.h>

#include <optional>

namespace ormel::chat {

/// How the terminal at standard input hands on what is typed. Destruction restores how it did before. One object at a
/// time.
class TerminalMode {
 public:
  TerminalMode() = default;
  TerminalMode(const TerminalMode&) = delete;
  TerminalMode& operator=(const TerminalMode&) = delete;
  ~TerminalMode() { restore(); }

  /// Has every key handed on at once and unseen, lines of any length, and what is pasted marked as such. `output` is a
  /// descriptor of the same terminal. False, with nothing done, where that cannot be: in the background, or on a
  /// terminal that knows nothing of it.
  bool takeKeys(int output);
  bool takesKeys() const noexcept { return keysBefore_.has_value(); }

  /// Keeps what is typed off the screen, where the terminal shows it by itself.
  void setHidden(bool hidden);

  void restore();

 private:
  std::optional<struct termios> keysBefore_;
  bool isHidden_ = false;
  int output_ = -1;
};

}  // namespace ormel::chat
