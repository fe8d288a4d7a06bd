#pragma once

#include <string>
#include <string_view>

#include "Support/TemporaryDirectory.h"

namespace ormel::chat {

/// A real terminal of 80 by 24 characters, with a program in it. Destruction ends both.
class TmuxTerminal {
 public:
  /// Runs a command of the shell; when it has ended, the terminal shows "ended with " and its status.
  explicit TmuxTerminal(const std::string& command);
  TmuxTerminal(const TmuxTerminal&) = delete;
  TmuxTerminal& operator=(const TmuxTerminal&) = delete;
  ~TmuxTerminal();

  /// Types a text as it is.
  void type(const std::string& text) const;
  /// Pastes a text, as from a clipboard: marked as pasted if the program has asked for that.
  void paste(const std::string& text) const;
  /// Presses a key, such as "Enter" or "C-c".
  void press(const std::string& key) const;
  void resize(int columns, int rows) const;

  /// All that is and was on the screen, with wrapped lines joined.
  std::string text() const { return run("capture-pane -p -J -S -"); }
  /// The same with the codes of its colours.
  std::string colouredText() const { return run("capture-pane -p -e -J -S -"); }
  /// The same with a line for each line of the screen.
  std::string unjoinedText() const { return run("capture-pane -p -S -"); }

  /// Whether the text comes to the screen in time.
  bool shows(std::string_view text) const;

 private:
  std::string run(const std::string& command) const;

  testing::TemporaryDirectory folder_;
};

}  // namespace ormel::chat
