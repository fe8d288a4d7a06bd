#include <array>
#include <cstdint>

#include "OrmelSDK/Base/FailureCause.h"
#include "OrmelSDK/Text/UTF8.h"

namespace ormel::detail {

namespace {

struct CodePoints {
  std::uint32_t first;
  std::uint32_t last;
};

// Beside the ASCII ones: the other control characters, and those that reorder, join or hide what stands around them.
constexpr std::array<CodePoints, 6> unseenCodePoints = {
    {{0x80, 0x9F}, {0x61C, 0x61C}, {0x200B, 0x200F}, {0x2028, 0x202E}, {0x2060, 0x2069}, {0xFEFF, 0xFEFF}}};

bool isUnseen(std::uint32_t codePoint) {
  for (const CodePoints& range : unseenCodePoints) {
    if (codePoint >= range.first && codePoint <= range.last) return true;
  }
  return false;
}

void appendEscapedBytes(std::string& quoted, std::string_view bytes) {
  constexpr std::string_view digits = "0123456789abcdef";
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    quoted += "\\x";
    quoted += digits[value >> 4];
    quoted += digits[value & 0xF];
  }
}

void appendASCII(std::string& quoted, char character) {
  constexpr char deleteCharacter = 0x7F;
  if (character == '\n') {
    quoted += "\\n";
  } else if (character == '\r') {
    quoted += "\\r";
  } else if (character == '\t') {
    quoted += "\\t";
  } else if (character == '"' || character == '\\') {
    quoted += '\\';
    quoted += character;
  } else if (character < ' ' || character == deleteCharacter) {
    appendEscapedBytes(quoted, {&character, 1});
  } else {
    quoted += character;
  }
}

std::size_t sequenceLength(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xE0) return 2;
  return lead < 0xF0 ? 3 : 4;
}

std::uint32_t codePointOf(std::string_view sequence) {
  constexpr std::array<unsigned, 5> leadBits = {0, 0x7F, 0x1F, 0x0F, 0x07};
  std::uint32_t codePoint = static_cast<unsigned char>(sequence[0]) & leadBits.at(sequence.size());
  for (const char byte : sequence.substr(1)) codePoint = codePoint << 6 | (static_cast<unsigned char>(byte) & 0x3F);
  return codePoint;
}

/// Appends the first character, or the first byte of what is none, and gives how many bytes that was.
std::size_t appendCharacter(std::string& quoted, std::string_view text) {
  const std::size_t length = sequenceLength(static_cast<unsigned char>(text[0]));
  const std::string_view sequence = text.substr(0, length);
  if (length == 1) {
    appendASCII(quoted, text[0]);
  } else if (sequence.size() < length || !isValidUTF8(sequence)) {
    appendEscapedBytes(quoted, text.substr(0, 1));
    return 1;
  } else if (isUnseen(codePointOf(sequence))) {
    appendEscapedBytes(quoted, sequence);
  } else {
    quoted += sequence;
  }
  return length;
}

}  // namespace

std::string quotedForPeople(std::string_view text, std::size_t limit) {
  std::string quoted = "\"";
  std::size_t read = 0;
  while (read < text.size() && read < limit) read += appendCharacter(quoted, text.substr(read));
  quoted += '"';
  if (read < text.size()) quoted += "...";
  return quoted;
}

}  // namespace ormel::detail
