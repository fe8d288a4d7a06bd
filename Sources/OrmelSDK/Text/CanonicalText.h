#pragma once

#include <compare>
#include <string>
#include <string_view>

namespace ormel::detail {

bool isASCII(std::string_view text) noexcept;

/// Whether two UTF-8 texts are the same text in Unicode's sense: equal after canonical decomposition.
bool canonicallyEquivalent(std::string_view left, std::string_view right);

/// The canonical decomposition of a UTF-8 text; text that is not well-formed comes back as it is.
std::string canonicalForm(std::string_view text);

/// An order in which exactly the canonically equivalent texts are equal.
std::strong_ordering compareCanonically(std::string_view left, std::string_view right);

}  // namespace ormel::detail
