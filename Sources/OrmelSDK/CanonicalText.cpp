#include "OrmelSDK/CanonicalText.h"

#include <utf8proc.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace ormel::detail {

bool isASCII(std::string_view text) noexcept {
  std::uint64_t seen = 0;
  const char* at = text.data();
  std::size_t left = text.size();
  for (; left >= sizeof(std::uint64_t); at += sizeof(std::uint64_t), left -= sizeof(std::uint64_t)) {
    std::uint64_t word;
    std::memcpy(&word, at, sizeof word);
    seen |= word;
  }
  for (; left > 0; ++at, --left) seen |= static_cast<unsigned char>(*at);
  return (seen & 0x8080808080808080u) == 0;
}

std::string canonicalForm(std::string_view text) {
  if (isASCII(text)) return std::string(text);
  utf8proc_uint8_t* result = nullptr;
  const auto options = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_DECOMPOSE);
  const auto size = utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                 static_cast<utf8proc_ssize_t>(text.size()), &result, options);
  const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owned(result, &std::free);
  if (size == UTF8PROC_ERROR_NOMEM) throw std::bad_alloc();
  if (size < 0) return std::string(text);
  return std::string(reinterpret_cast<const char*>(result), static_cast<std::size_t>(size));
}

bool canonicallyEquivalent(std::string_view left, std::string_view right) {
  if (left == right) return true;
  if (isASCII(left) && isASCII(right)) return false;
  return canonicalForm(left) == canonicalForm(right);
}

std::strong_ordering compareCanonically(std::string_view left, std::string_view right) {
  if (isASCII(left) && isASCII(right)) return left <=> right;
  return canonicalForm(left) <=> canonicalForm(right);
}

}  // namespace ormel::detail
