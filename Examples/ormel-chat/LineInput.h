#pragma once

#include <chrono>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "KeyReader.h"
#include "TerminalMode.h"
#include "TypedLine.h"

namespace ormel::chat {

/// Standard input, a line at a time, without waiting. A line that was typed or pasted in a terminal may hold line
/// feeds.
class LineInput {
 public:
  LineInput();

  bool isTerminal() const noexcept { return isTerminal_; }

  /// Has a terminal hand on each key, so that a line may be of any length; who calls it shows what is typed. Nothing
  /// changes where that cannot be. `output` is a descriptor of the same terminal.
  void editLines(int output) { mode_.takeKeys(output); }
  /// Whether that is so. If not, the terminal itself shows what is typed.
  bool isEditing() const noexcept { return mode_.takesKeys(); }
  /// Leaves the terminal as it was, for as long as this program is suspended.
  void release() { mode_.restore(); }

  /// Whether a line is there.
  bool hasLine() const noexcept { return !lines_.empty(); }
  const std::string& line() const { return lines_.front().text; }
  std::string takeLine();

  /// The first line as it stands on the screen.
  std::string shownLine() const { return isHidden_ ? "" : lines_.front().shown; }
  /// The next line as far as it was typed, as it stands on the screen.
  std::string shownTyping() const { return isHidden_ ? "" : typed_.shown(); }
  bool hasTyping() const noexcept { return !typed_.isEmpty(); }
  void clearTyping() { typed_.clear(); }

  /// Whether somebody is in the middle of a line, or of pasting.
  bool isBeingTyped() const;
  /// When that will be over if no key is pressed.
  std::chrono::milliseconds untilTypingPauses() const;

  /// Gives a text back that could not be used: to a line that is being typed, or else as the next line.
  void putBack(const std::string& text);

  /// Sets what was typed aside, so that the line begins empty; for a question that nobody could have seen while typing.
  void setAside();
  /// Puts it back in place of what was typed since.
  void takeUp();

  /// Keeps what is typed off the screen.
  void setHidden(bool hidden);

  /// Whether all lines were taken and no more will come.
  bool isAtEnd() const noexcept { return ended_ && lines_.empty(); }

  /// The descriptor to poll, or -1 when there is nothing to read: `poll` ignores a negative one. Lines that a script
  /// has written beforehand stay in the pipe until the lines before them are dealt with.
  int descriptor() const noexcept { return ended_ || (!isTerminal_ && hasLine()) ? -1 : 0; }

  /// Reads what is there; called when the descriptor is ready.
  void readAvailable();

 private:
  using Clock = std::chrono::steady_clock;

  struct Line {
    std::string text;
    std::string shown;
  };

  void takeBytes(std::string_view bytes);
  void takeKey(const Key& key);
  void end();

  std::deque<Line> lines_;
  std::string partial_;
  bool ended_ = false;
  bool isTerminal_;
  TerminalMode mode_;
  KeyReader keys_;
  TypedLine typed_;
  std::optional<TypedLine> setAside_;
  bool isHidden_ = false;
  Clock::time_point lastKey_;
};

}  // namespace ormel::chat
