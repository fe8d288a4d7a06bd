#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Console.h"

namespace ormel::chat {

/// Something that somebody else says, within a prompt.
struct Quote {
  /// The program's own word for it.
  std::string label;
  std::string text;
  /// Whether each line of a text of several lines has its number in place of the label.
  bool isNumbered = false;
};

/// Writes what asks. Every line has the console's margin, which no other output has. Behind the margin stand the
/// program's own words; or else a label, a bar, and behind the bar what somebody else says, each character of it
/// visible. Long lines are broken here, since a line that the terminal breaks goes on without the margin.
class PromptWriter {
 public:
  /// `showsAll`: also what is long.
  PromptWriter(Console& console, bool showsAll) : console_(console), showsAll_(showsAll) {}

  /// A line of the program's own words.
  void say(std::string_view words, Style style = Style::plain);

  /// On a terminal, of what takes many lines only the beginning and the end are shown.
  void quote(const std::vector<Quote>& quotes);

  /// Tells how to read what was quoted, if that has to be told.
  void explain();

  /// The words behind which the answer is typed.
  void invite(std::string_view words);

  /// Whether not all was shown.
  bool hasOmitted() const noexcept { return hasOmitted_; }

 private:
  struct Span {
    std::string text;
    bool isEscape;
  };
  struct Row {
    std::string label;
    std::vector<Span> spans;
  };

  void addRows(const Quote& quote, std::vector<Row>& rows);
  void addLine(std::string label, std::string_view line, std::vector<Row>& rows);
  void write(const Row& row);

  Console& console_;
  bool showsAll_;
  bool hasOmitted_ = false;
  std::size_t escapes_ = 0;
  bool hasRightToLeft_ = false;
};

}  // namespace ormel::chat
