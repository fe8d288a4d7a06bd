#include "ormel-simulator/Machine/Base64.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace ormel::simulator {

namespace {

constexpr std::string_view base64Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr unsigned bitsOfDigit = 6;
constexpr unsigned bitsOfByte = 8;
constexpr std::size_t digitsOfGroup = 4;
constexpr std::uint8_t noDigit = 64;

/// The digit that each byte stands for.
constexpr std::array<std::uint8_t, 256> digitValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(noDigit);
  for (std::size_t digit = 0; digit < base64Digits.size(); ++digit) {
    values[static_cast<unsigned char>(base64Digits[digit])] = static_cast<std::uint8_t>(digit);
  }
  return values;
}();

}  // namespace

std::string base64Of(std::string_view bytes) {
  std::string text;
  std::uint32_t pending = 0;
  unsigned pendingBits = 0;
  for (const char byte : bytes) {
    pending = pending << bitsOfByte | static_cast<unsigned char>(byte);
    pendingBits += bitsOfByte;
    while (pendingBits >= bitsOfDigit) {
      pendingBits -= bitsOfDigit;
      text += base64Digits[pending >> pendingBits & 63U];
    }
  }
  if (pendingBits > 0) text += base64Digits[pending << (bitsOfDigit - pendingBits) & 63U];
  while (text.size() % digitsOfGroup != 0) text += '=';
  return text;
}

std::optional<std::string> bytesOfBase64(std::string_view text) {
  if (text.size() % digitsOfGroup != 0) return std::nullopt;
  if (text.ends_with('=')) text.remove_suffix(1);
  if (text.ends_with('=')) text.remove_suffix(1);
  std::string bytes;
  std::uint32_t pending = 0;
  unsigned pendingBits = 0;
  for (const char character : text) {
    const std::uint8_t digit = digitValues[static_cast<unsigned char>(character)];
    if (digit == noDigit) return std::nullopt;
    pending = pending << bitsOfDigit | digit;
    pendingBits += bitsOfDigit;
    if (pendingBits < bitsOfByte) continue;
    pendingBits -= bitsOfByte;
    bytes += static_cast<char>(pending >> pendingBits & 255U);
  }
  // The bits that fill up the last digit are zero, so that each text has one meaning.
  const bool isPadded = (pending & ((1U << pendingBits) - 1)) == 0;
  return isPadded && pendingBits < bitsOfDigit ? std::optional(bytes) : std::nullopt;
}

}  // namespace ormel::simulator
