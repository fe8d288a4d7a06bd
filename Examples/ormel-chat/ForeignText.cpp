#include "ForeignText.h"

#include <algorithm>

#include "Characters.h"

namespace ormel::chat {

namespace {

/// More marks on one character than this reach into the lines above and below.
constexpr int mostMarks = 3;

constexpr std::string_view replacement = "\xef\xbf\xbd";

bool isPlain(char byte) { return (byte >= ' ' && byte < 0x7f) || byte == '\n' || byte == '\t'; }

std::string hexadecimal(char32_t number, std::size_t leastDigits) {
  std::string digits;
  for (; number != 0 || digits.size() < leastDigits; number >>= 4) digits.push_back("0123456789ABCDEF"[number & 0xf]);
  std::reverse(digits.begin(), digits.end());
  return digits;
}

VisiblePiece escaped(const Character& character) {
  const std::string text =
      character.isValid ? "<U+" + hexadecimal(character.code, 4) + ">" : "<0x" + hexadecimal(character.code, 2) + ">";
  return {text, static_cast<int>(text.size()), true};
}

}  // namespace

std::string harmless(std::string_view text) {
  std::string kept;
  kept.reserve(text.size());
  while (!text.empty()) {
    const auto end = std::find_if_not(text.begin(), text.end(), isPlain);
    kept.append(text.begin(), end);
    text.remove_prefix(static_cast<std::size_t>(end - text.begin()));
    if (text.empty()) break;
    const Character character = firstCharacter(text);
    if (!character.isValid) {
      kept.append(replacement);
    } else if (looksLikeMargin(character.code)) {
      kept.push_back('#');
    } else if (!isHarmful(character.code)) {
      kept.append(text.substr(0, character.size));
    }
    text.remove_prefix(character.size);
  }
  return kept;
}

bool VisibleReader::isSeen(char32_t code) {
  if (isHidden(code) || looksLikeMargin(code)) {
    marks_ = noCarrier;
    return false;
  }
  if (isCombining(code)) return !isOverlay(code) && ++marks_ <= mostMarks;
  marks_ = code == ' ' ? noCarrier : 0;
  return true;
}

std::optional<VisiblePiece> VisibleReader::next() {
  if (rest_.empty()) return std::nullopt;
  const Character character = firstCharacter(rest_);
  const bool looksLikeEscape = rest_.starts_with("<U+") || rest_.starts_with("<0x");
  const std::string_view bytes = rest_.substr(0, character.size);
  rest_.remove_prefix(character.size);
  if (!character.isValid || looksLikeEscape || !isSeen(character.code)) {
    marks_ = noCarrier;
    return escaped(character);
  }
  hasRightToLeft_ = hasRightToLeft_ || isRightToLeft(character.code);
  return VisiblePiece{std::string(bytes), columnsOf(character.code), false};
}

std::string visible(std::string_view text) {
  std::string line;
  for (VisibleReader reader(text); auto piece = reader.next();) line += piece->text;
  return line;
}

}  // namespace ormel::chat
