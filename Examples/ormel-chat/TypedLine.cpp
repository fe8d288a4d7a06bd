#include "TypedLine.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "Characters.h"
#include "ForeignText.h"

namespace ormel::chat {

namespace {

/// In bytes. A longer paste is not drawn.
constexpr std::size_t longestDrawnPaste = 200;

std::string noteOf(std::string_view pasted) {
  const auto lines = std::count(pasted.begin(), pasted.end(), '\n') + (pasted.ends_with('\n') ? 0 : 1);
  return "[pasted: " + std::to_string(pasted.size()) + " bytes, " + std::to_string(lines) +
         (lines == 1 ? " line]" : " lines]");
}

}  // namespace

std::vector<TypedLine::Piece> TypedLine::piecesOf(std::string_view text) {
  const bool isDrawn = text.size() <= longestDrawnPaste && text.find('\n') == text.npos;
  if (!isDrawn) return {{std::string(text), noteOf(text), false}};
  std::vector<Piece> pieces;
  while (!text.empty()) {
    const Character character = firstCharacter(text);
    const auto bytes = text.substr(0, character.size);
    const bool isMark = character.isValid && isCombining(character.code);
    pieces.push_back({std::string(bytes), isMark ? std::string(bytes) : visible(bytes), isMark});
    text.remove_prefix(character.size);
  }
  return pieces;
}

void TypedLine::apply(const Key& key) {
  switch (key.kind) {
    case Key::Kind::text:
    case Key::Kind::paste: {
      auto pieces = piecesOf(key.text);
      std::move(pieces.begin(), pieces.end(), std::back_inserter(pieces_));
      break;
    }
    case Key::Kind::erase:
      erase();
      break;
    case Key::Kind::eraseWord:
      eraseWord();
      break;
    case Key::Kind::eraseLine:
      clear();
      break;
    default:
      break;
  }
}

void TypedLine::erase() {
  while (!pieces_.empty() && pieces_.back().isMark) pieces_.pop_back();
  if (!pieces_.empty()) pieces_.pop_back();
}

void TypedLine::eraseWord() {
  const auto isBlank = [](const Piece& piece) { return piece.text == " " || piece.text == "\t"; };
  while (!pieces_.empty() && isBlank(pieces_.back())) pieces_.pop_back();
  while (!pieces_.empty() && !isBlank(pieces_.back())) pieces_.pop_back();
}

std::string TypedLine::text() const {
  std::string text;
  for (const auto& piece : pieces_) text += piece.text;
  return text;
}

std::string TypedLine::shown() const {
  std::string shown;
  for (const auto& piece : pieces_) shown += piece.shown;
  return shown;
}

void TypedLine::putInFront(std::string_view text) {
  auto pieces = piecesOf(text);
  if (!pieces_.empty()) pieces.push_back({" ", " ", false});
  pieces_.insert(pieces_.begin(), std::make_move_iterator(pieces.begin()), std::make_move_iterator(pieces.end()));
}

int columnsOfShown(std::string_view shown) {
  int columns = 0;
  while (!shown.empty()) {
    const Character character = firstCharacter(shown);
    columns += columnsOf(character.code);
    shown.remove_prefix(character.size);
  }
  return columns;
}

}  // namespace ormel::chat
