#include "Base64.h"

#include <cstdint>

namespace ormel::control {

namespace {

constexpr std::size_t groupSize = 4;
constexpr unsigned bitsOfDigit = 6;

std::optional<std::uint32_t> valueOf(char digit) {
  constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const auto place = digits.find(digit);
  if (place == digits.npos) return std::nullopt;
  return static_cast<std::uint32_t>(place);
}

}  // namespace

std::optional<std::string> bytesOfBase64(std::string_view text) {
  if (text.size() % groupSize != 0) return std::nullopt;
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  text.remove_suffix(padding);
  std::string bytes;
  bytes.reserve(text.size() * 3 / groupSize);
  std::uint32_t bits = 0;
  unsigned count = 0;
  for (const char digit : text) {
    const auto value = valueOf(digit);
    if (!value) return std::nullopt;
    bits = bits << bitsOfDigit | *value;
    count += bitsOfDigit;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 0xff);
  }
  return bytes;
}

}  // namespace ormel::control
