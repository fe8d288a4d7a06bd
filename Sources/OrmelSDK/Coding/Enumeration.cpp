#include "OrmelSDK/Coding/Enumeration.h"

namespace ormel::coding {

std::string canonicalWord(std::string_view text) {
  constexpr std::string_view blanks = " \t\n\v\f\r";
  const auto first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  text = text.substr(first, text.find_last_not_of(blanks) - first + 1);
  std::string canonical;
  canonical.reserve(text.size());
  for (const char byte : text) {
    if (byte == '_' || byte == '-') continue;
    canonical += byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
  }
  return canonical;
}

}  // namespace ormel::coding
