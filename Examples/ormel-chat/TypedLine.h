#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "KeyReader.h"

namespace ormel::chat {

/// The line that is being typed. Something long or of several lines that was pasted is one piece of it, which stands on
/// the screen as a note of its size and is erased as a whole.
class TypedLine {
 public:
  /// Changes the line. Not for `enter` and `endOfInput`.
  void apply(const Key& key);

  bool isEmpty() const noexcept { return pieces_.empty(); }
  std::string text() const;
  /// How it stands on the screen.
  std::string shown() const;

  void clear() { pieces_.clear(); }
  /// Puts a text in front of what was typed.
  void putInFront(std::string_view text);

 private:
  struct Piece {
    std::string text;
    std::string shown;
    /// Whether it is drawn into the piece before it.
    bool isMark = false;
  };

  static std::vector<Piece> piecesOf(std::string_view text);
  void erase();
  void eraseWord();

  std::vector<Piece> pieces_;
};

/// Columns that a text takes which `TypedLine::shown` gave.
int columnsOfShown(std::string_view shown);

}  // namespace ormel::chat
