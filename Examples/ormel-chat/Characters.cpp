#include "Characters.h"

#include <utf8proc.h>

#include <algorithm>

namespace ormel::chat {

namespace {

struct Range {
  char32_t first;
  char32_t last;
};

bool isIn(const auto& ranges, char32_t code) {
  return std::any_of(std::begin(ranges), std::end(ranges),
                     [&](const Range& range) { return range.first <= code && code <= range.last; });
}

// Full and heavy bars, whole and in parts.
constexpr Range bars[] = {{0x2016, 0x2016}, {0x2225, 0x2225}, {0x2503, 0x2503}, {0x2507, 0x2507}, {0x250b, 0x250b},
                          {0x2551, 0x2551}, {0x2580, 0x259f}, {0x25ae, 0x25ae}, {0x2758, 0x275a}, {0x1fb00, 0x1fbff}};

// They look like a space, but are none, though their category says letter or symbol.
constexpr Range blanks[] = {{0x2800, 0x2800}, {0x1d159, 0x1d159}};

constexpr Range overlays[] = {{0x0334, 0x0338}, {0x20d2, 0x20d3}, {0x20d8, 0x20da}, {0x20e5, 0x20e6},
                              {0x20ea, 0x20eb}, {0x1ab6, 0x1ab6}, {0x1dfb, 0x1dfb}};

// Joiners, and the choice between the plain and the coloured form of a symbol.
constexpr Range harmlessFormats[] = {{0x200c, 0x200d}, {0xfe0e, 0xfe0f}};

utf8proc_category_t categoryOf(char32_t code) { return utf8proc_category(static_cast<utf8proc_int32_t>(code)); }

const utf8proc_property_t& propertyOf(char32_t code) {
  return *utf8proc_get_property(static_cast<utf8proc_int32_t>(code));
}

}  // namespace

Character firstCharacter(std::string_view text) {
  const auto byte = static_cast<unsigned char>(text.front());
  if (byte < 0x80) return {byte, 1, true};
  utf8proc_int32_t code = 0;
  const auto size = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                     static_cast<utf8proc_ssize_t>(text.size()), &code);
  if (size <= 0) return {byte, 1, false};
  return {static_cast<char32_t>(code), static_cast<std::size_t>(size), true};
}

bool isHidden(char32_t code) {
  if (code >= ' ' && code < 0x7f) return false;
  switch (categoryOf(code)) {
    case UTF8PROC_CATEGORY_CC:
    case UTF8PROC_CATEGORY_CF:
    case UTF8PROC_CATEGORY_CS:
    case UTF8PROC_CATEGORY_CO:
    case UTF8PROC_CATEGORY_CN:
    case UTF8PROC_CATEGORY_ZS:
    case UTF8PROC_CATEGORY_ZL:
    case UTF8PROC_CATEGORY_ZP:
      return true;
    default:
      return propertyOf(code).ignorable || isIn(blanks, code);
  }
}

bool isHarmful(char32_t code) {
  if (code == '\n' || code == '\t') return false;
  switch (categoryOf(code)) {
    case UTF8PROC_CATEGORY_CC:
    case UTF8PROC_CATEGORY_CS:
    case UTF8PROC_CATEGORY_ZL:
    case UTF8PROC_CATEGORY_ZP:
      return true;
    default:
      return propertyOf(code).ignorable && !isIn(harmlessFormats, code);
  }
}

bool looksLikeMargin(char32_t code) {
  // A font may give a private character any form.
  return code >= 0x2016 && (isIn(bars, code) || categoryOf(code) == UTF8PROC_CATEGORY_CO);
}

bool isCombining(char32_t code) {
  const auto category = categoryOf(code);
  return category == UTF8PROC_CATEGORY_MN || category == UTF8PROC_CATEGORY_MC || category == UTF8PROC_CATEGORY_ME;
}

bool isOverlay(char32_t code) { return categoryOf(code) == UTF8PROC_CATEGORY_ME || isIn(overlays, code); }

bool isRightToLeft(char32_t code) {
  if (code < 0x80) return false;
  const auto direction = propertyOf(code).bidi_class;
  return direction == UTF8PROC_BIDI_CLASS_R || direction == UTF8PROC_BIDI_CLASS_AL;
}

int columnsOf(char32_t code) {
  if (code >= ' ' && code < 0x7f) return 1;
  return utf8proc_charwidth(static_cast<utf8proc_int32_t>(code));
}

}  // namespace ormel::chat
