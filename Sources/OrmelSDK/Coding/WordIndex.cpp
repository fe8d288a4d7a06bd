#include "OrmelSDK/Coding/WordIndex.h"

#include <string>

#include "OrmelSDK/Text/CanonicalText.h"

namespace ormel::coding {

namespace {

// The words are plain ASCII and so their own canonical form.
void findOtherSpellings(const JSONObject& object, const WordIndex& index, const JSONValue** found) {
  for (const auto& [key, value] : object) {
    if (detail::isASCII(key)) continue;
    const std::string canonical = detail::canonicalForm(key);
    for (std::size_t position = 0; position < index.size(); ++position) {
      if (index[position] == canonical) found[position] = &value;
    }
  }
}

}  // namespace

void findMembers(const JSONObject& object, const WordIndex& index, const JSONValue** found) {
  const auto* member = detail::JSONAccess::members(object);
  for (const auto* const end = member + object.size(); member != end; ++member) {
    const std::size_t position = index.find(member->key);
    if (position != WordIndex::none) found[position] = &member->value;
  }
  if (detail::JSONAccess::hasNonASCIIKey(object)) [[unlikely]]
    findOtherSpellings(object, index, found);
}

}  // namespace ormel::coding
