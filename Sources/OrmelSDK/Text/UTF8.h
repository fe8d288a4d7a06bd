#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ormel {

// Well-formed UTF-8 is that of the Unicode standard: no overlong form, no surrogate, nothing beyond U+10FFFF. All sizes
// and offsets count bytes. The functions keep nothing and may be called from any thread.

/// Whether `bytes` is well-formed UTF-8.
bool isValidUTF8(std::string_view bytes) noexcept;

/// Length of the longest well-formed prefix of `bytes`, which is also the offset of the first malformed sequence; the
/// whole size if there is none.
std::size_t validUTF8Prefix(std::string_view bytes) noexcept;

/// Replaces each malformed sequence in `bytes` by U+FFFD.
///
/// This is the one repair of the system: everything that takes bytes from outside as text uses it. It follows Unicode's
/// recommended practice ("maximal subpart"): the start of a truncated sequence gives one replacement, any other wrong
/// byte one each. The result is always well-formed, and the same text if `bytes` was. It may be up to three times as
/// long. Linear in time; fails with `std::bad_alloc` only.
std::string repairedUTF8(std::string_view bytes);

}  // namespace ormel
