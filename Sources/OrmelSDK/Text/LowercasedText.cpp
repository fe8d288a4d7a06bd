#include "OrmelSDK/Text/LowercasedText.h"

#include <utf8proc.h>

namespace ormel::detail {

std::string lowercased(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    utf8proc_int32_t character = 0;
    const auto size = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                       static_cast<utf8proc_ssize_t>(text.size()), &character);
    if (size <= 0) {
      result += text.front();
      text.remove_prefix(1);
      continue;
    }
    utf8proc_uint8_t lower[4];
    const auto lowerSize = utf8proc_encode_char(utf8proc_tolower(character), lower);
    result.append(reinterpret_cast<const char*>(lower), static_cast<std::size_t>(lowerSize));
    text.remove_prefix(static_cast<std::size_t>(size));
  }
  return result;
}

}  // namespace ormel::detail
