#include "TerminalText.h"

#include <utf8proc.h>

#include <array>
#include <cstdint>
#include <cstdio>

#include "OrmelSDK/Text/UTF8.h"

namespace ormel::control {

namespace {

constexpr std::string_view ellipsis = "…";
constexpr std::int32_t emojiPresentation = 0xfe0f;
constexpr std::size_t emojiColumns = 2;

struct CodePoint {
  std::int32_t value = 0;
  std::size_t bytes = 0;
};

/// The first one of a text that is well-formed and not empty.
CodePoint firstOf(std::string_view text) {
  CodePoint first;
  const auto bytes = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                      static_cast<utf8proc_ssize_t>(text.size()), &first.value);
  first.bytes = bytes > 0 ? static_cast<std::size_t>(bytes) : 1;
  return first;
}

/// Control characters, line and paragraph separators, and the marks that change the direction of the text.
bool isDangerous(std::int32_t value) {
  const bool isControl = value < 0x20 || (value >= 0x7f && value < 0xa0);
  const bool isDirection = value == 0x61c || value == 0x200e || value == 0x200f;
  const bool isSeparatorOrEmbedding = value >= 0x2028 && value <= 0x202e;
  const bool isIsolate = value >= 0x2066 && value <= 0x2069;
  return isControl || isDirection || isSeparatorOrEmbedding || isIsolate;
}

std::string fourDigits(std::int32_t value) {
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "\\u%04x", static_cast<unsigned>(value));
  return text.data();
}

std::string shortEscape(std::int32_t value) {
  if (value == '\n') return "\\n";
  if (value == '\t') return "\\t";
  if (value == '\r') return "\\r";
  return fourDigits(value);
}

/// The text with its dangerous code points replaced by what `escape` makes of them.
template <typename Escape>
std::string escaped(std::string_view bytes, Escape escape) {
  const std::string text = repairedUTF8(bytes);
  std::string result;
  result.reserve(text.size());
  for (std::string_view rest = text; !rest.empty();) {
    const CodePoint first = firstOf(rest);
    if (isDangerous(first.value)) {
      result += escape(first.value);
    } else {
      result += rest.substr(0, first.bytes);
    }
    rest.remove_prefix(first.bytes);
  }
  return result;
}

/// A character as a reader counts them, with its marks.
struct Character {
  std::size_t bytes = 0;
  std::size_t columns = 0;
};

/// Parts that a terminal may or may not join into one picture count each: rather too many columns than too few.
Character nextCharacter(std::string_view text) {
  Character character;
  std::int32_t state = 0;
  std::int32_t before = 0;
  while (character.bytes < text.size()) {
    const CodePoint point = firstOf(text.substr(character.bytes));
    if (character.bytes > 0 && utf8proc_grapheme_break_stateful(before, point.value, &state)) break;
    const int width = utf8proc_charwidth(point.value);
    character.columns += width > 0 ? static_cast<std::size_t>(width) : 0;
    if (point.value == emojiPresentation && character.columns < emojiColumns) character.columns = emojiColumns;
    character.bytes += point.bytes;
    before = point.value;
  }
  return character;
}

}  // namespace

std::string onOneLine(std::string_view text) { return escaped(text, shortEscape); }

std::string onManyLines(std::string_view text) {
  return escaped(text, [](std::int32_t value) {
    const bool isKept = value == '\n' || value == '\t';
    return isKept ? std::string(1, static_cast<char>(value)) : shortEscape(value);
  });
}

std::string harmlessJSON(std::string_view json) { return escaped(json, fourDigits); }

std::size_t columnsOf(std::string_view text) {
  std::size_t columns = 0;
  while (!text.empty()) {
    const Character next = nextCharacter(text);
    columns += next.columns;
    text.remove_prefix(next.bytes);
  }
  return columns;
}

std::string cutTo(std::size_t columns, std::string_view text) {
  std::size_t kept = 0;
  std::size_t used = 0;
  std::size_t keptBesideEllipsis = 0;
  while (kept < text.size()) {
    const Character next = nextCharacter(text.substr(kept));
    if (used + next.columns > columns) {
      return columns == 0 ? std::string() : std::string(text.substr(0, keptBesideEllipsis)) + std::string(ellipsis);
    }
    used += next.columns;
    kept += next.bytes;
    if (used < columns) keptBesideEllipsis = kept;
  }
  return std::string(text);
}

}  // namespace ormel::control
