#include "OrmelSDK/Text/UTF8.h"

#include <simdjson.h>

#include <algorithm>

namespace ormel {

namespace {

constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

struct Sequence {
  std::size_t size;
  bool valid;
};

struct LeadRule {
  std::size_t continuationCount;
  unsigned char firstLow;
  unsigned char firstHigh;
};

// Table 3-7 of the Unicode standard: the second byte's range depends on the lead byte.
LeadRule ruleFor(unsigned char lead) {
  if (lead >= 0xC2 && lead <= 0xDF) return {1, 0x80, 0xBF};
  if (lead == 0xE0) return {2, 0xA0, 0xBF};
  if (lead == 0xED) return {2, 0x80, 0x9F};
  if (lead >= 0xE1 && lead <= 0xEF) return {2, 0x80, 0xBF};
  if (lead == 0xF0) return {3, 0x90, 0xBF};
  if (lead >= 0xF1 && lead <= 0xF3) return {3, 0x80, 0xBF};
  if (lead == 0xF4) return {3, 0x80, 0x8F};
  return {0, 0, 0};
}

// The sequence at the start of `bytes`: a whole character, or the maximal part of one that must be replaced.
Sequence sequenceAt(std::string_view bytes) {
  const auto lead = static_cast<unsigned char>(bytes[0]);
  if (lead < 0x80) return {1, true};
  const LeadRule rule = ruleFor(lead);
  if (rule.continuationCount == 0) return {1, false};
  std::size_t size = 1;
  for (; size <= rule.continuationCount; ++size) {
    if (size == bytes.size()) return {size, false};
    const auto byte = static_cast<unsigned char>(bytes[size]);
    const unsigned char low = size == 1 ? rule.firstLow : 0x80;
    const unsigned char high = size == 1 ? rule.firstHigh : 0xBF;
    if (byte < low || byte > high) return {size, false};
  }
  return {size, true};
}

}  // namespace

bool isValidUTF8(std::string_view bytes) noexcept { return simdjson::validate_utf8(bytes.data(), bytes.size()); }

std::size_t validUTF8Prefix(std::string_view bytes) noexcept {
  std::size_t at = 0;
  while (at < bytes.size()) {
    const Sequence sequence = sequenceAt(bytes.substr(at));
    if (!sequence.valid) return at;
    at += sequence.size;
  }
  return at;
}

std::string repairedUTF8(std::string_view bytes) {
  if (isValidUTF8(bytes)) return std::string(bytes);
  std::string repaired;
  repaired.reserve(bytes.size() + bytes.size() / 8);
  std::size_t at = 0;
  while (at < bytes.size()) {
    const Sequence sequence = sequenceAt(bytes.substr(at));
    repaired += sequence.valid ? bytes.substr(at, sequence.size) : replacementCharacter;
    at += sequence.size;
  }
  return repaired;
}

}  // namespace ormel
