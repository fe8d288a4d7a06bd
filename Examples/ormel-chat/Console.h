#pragma once

#include <string>
#include <string_view>

namespace ormel::chat {

enum class Style { plain, dim, bold, green, yellow, red, cyan };

/// One of the program's output streams, line by line. It uses no cursor movement, so that a window of any width, and
/// one that changes its width, shows it rightly.
class Console {
 public:
  /// The beginning of each line that asks. Nothing that is written to a terminal can show it elsewhere.
  static constexpr std::string_view margin = "\u258c ";

  /// The reader of an output that is no terminal: a program that is to get each text as it is, or people all the same.
  enum class Readers { programs, people };

  /// Colours only a terminal that has some, and only if NO_COLOR is not set.
  explicit Console(int descriptor, Readers readers = Readers::programs);

  int descriptor() const noexcept { return descriptor_; }
  bool isTerminal() const noexcept { return isTerminal_; }
  /// How many columns the terminal has now; 0 for what is none.
  int columns() const noexcept;
  bool isAtLineStart() const noexcept { return lineFeeds_ > 0; }

  /// Adds text, which may be part of a line. People get it as `harmless` leaves it.
  void write(std::string_view text, Style style = Style::plain);

  /// Takes so many columns back from the end of the line, if the terminal has not broken it meanwhile.
  void erase(int columns);

  /// Ends the line that has been begun, if any.
  void endLine();

  /// The user has ended the line, by answering what was asked.
  void noteLineEntered() noexcept { lineFeeds_ = 1; }

  /// Begins a line that asks.
  void beginAsking();

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
  bool isForPeople_;
  bool colours_;
  std::string pending_;
  /// Line feeds at the end of what was written; two to begin with, so that no output begins with an empty line.
  int lineFeeds_ = 2;
};

}  // namespace ormel::chat
