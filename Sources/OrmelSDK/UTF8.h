#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ormel {

/// Whether `bytes` is well-formed UTF-8.
bool isValidUTF8(std::string_view bytes) noexcept;

/// Length of the longest well-formed prefix of `bytes`.
std::size_t validUTF8Prefix(std::string_view bytes) noexcept;

/// Replaces each maximal part of `bytes` that no well-formed UTF-8 continues by U+FFFD.
///
/// This is the one repair of the system: everything that takes bytes from outside as text uses it. "Maximal part"
/// is Unicode's recommended practice: the start of a truncated sequence gives one replacement, any other wrong
/// byte one each.
std::string repairedUTF8(std::string_view bytes);

}  // namespace ormel
