#pragma once

#include <string>
#include <string_view>

namespace ormel::chat {

enum class Style { plain, dim, bold, green, yellow, red, cyan };

/// One of the program's output streams, line by line. It uses no cursor movement, so that a window of any width, and
/// one that changes its width, shows it rightly.
class Console {
 public:
  /// Colours only a terminal that has some, and only if NO_COLOR is not set.
  explicit Console(int descriptor);

  bool isTerminal() const noexcept { return isTerminal_; }
  bool isAtLineStart() const noexcept { return lineFeeds_ > 0; }

  /// Adds text, which may be part of a line. Text from the server may hold control characters; a terminal does not get
  /// them.
  void write(std::string_view text, Style style = Style::plain);

  /// Ends the line that has been begun, if any.
  void endLine();

  /// The user has ended the line, by answering what was asked.
  void noteLineEntered() noexcept { lineFeeds_ = 1; }

  /// A whole line of its own.
  void line(std::string_view text, Style style = Style::plain);

  /// An empty line, unless one is there already or nothing was written yet.
  void separate();

  /// Hands everything to the system.
  void flush();

 private:
  void append(std::string_view text);

  int descriptor_;
  bool isTerminal_;
  bool colours_;
  std::string pending_;
  /// Line feeds at the end of what was written; two to begin with, so that no output begins with an empty line.
  int lineFeeds_ = 2;
};

/// The text without what a terminal would take for a command. Tabs and line feeds stay.
std::string harmless(std::string_view text);

}  // namespace ormel::chat
