#include "OrmelSDK/Coding/Enumeration.h"

#include "OrmelSDK/LowercasedText.h"
#include "OrmelSDK/TrimmedText.h"

namespace ormel::coding {

std::string canonicalWord(std::string_view text) {
  std::string canonical = detail::lowercased(detail::trimmed(text));
  std::erase_if(canonical, [](char byte) { return byte == '_' || byte == '-'; });
  return canonical;
}

}  // namespace ormel::coding
