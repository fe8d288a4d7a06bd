#pragma once

#include <optional>
#include <string>
#include <string_view>

// Texts that are not the program's own: what the server, the agent and its tools say.
namespace ormel::chat {

/// The text without what a terminal would obey or show out of place, and without what looks like the margin of what
/// asks. Tabs and line feeds stay. For text to be read, such as an answer; not for text to decide about.
std::string harmless(std::string_view text);

/// A character as it is shown where a person decides about it.
struct VisiblePiece {
  /// The character; or, if it could not be seen for what it is, its number, like "<U+001B>", or its byte, like
  /// "<0xFF>".
  std::string text;
  /// In a terminal.
  int columns = 1;
  bool isEscape = false;
};

/// Reads a text so that each of its characters is seen. Text that looks like an escape is escaped itself, so that
/// different texts never look the same.
class VisibleReader {
 public:
  explicit VisibleReader(std::string_view text) : rest_(text) {}

  /// Nothing at the end.
  std::optional<VisiblePiece> next();

  /// Whether some of what was read is written from right to left, so that a terminal might show it in another order.
  bool hasRightToLeft() const noexcept { return hasRightToLeft_; }

 private:
  bool isSeen(char32_t code);

  std::string_view rest_;
  /// Marks on the character that was read last; many when there is none that could carry one.
  int marks_ = noCarrier;
  bool hasRightToLeft_ = false;

  static constexpr int noCarrier = 1000;
};

/// The whole text, in one line.
std::string visible(std::string_view text);

}  // namespace ormel::chat
