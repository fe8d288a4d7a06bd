#include "OrmelSDK/Text/TrimmedText.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace ormel::detail {

namespace {

using namespace std::string_view_literals;

// The separators of Unicode (categories Zs, Zl, Zp), tab, and the controls that end a line, in UTF-8. None of them
// is a suffix of another one.
constexpr std::array blanks = {" "sv,
                               "\n"sv,
                               "\r"sv,
                               "\t"sv,
                               "\v"sv,
                               "\f"sv,
                               "\xC2\x85"sv,
                               "\xC2\xA0"sv,
                               "\xE1\x9A\x80"sv,
                               "\xE2\x80\x80"sv,
                               "\xE2\x80\x81"sv,
                               "\xE2\x80\x82"sv,
                               "\xE2\x80\x83"sv,
                               "\xE2\x80\x84"sv,
                               "\xE2\x80\x85"sv,
                               "\xE2\x80\x86"sv,
                               "\xE2\x80\x87"sv,
                               "\xE2\x80\x88"sv,
                               "\xE2\x80\x89"sv,
                               "\xE2\x80\x8A"sv,
                               "\xE2\x80\xA8"sv,
                               "\xE2\x80\xA9"sv,
                               "\xE2\x80\xAF"sv,
                               "\xE2\x81\x9F"sv,
                               "\xE3\x80\x80"sv};

std::size_t leadingBlank(std::string_view text) noexcept {
  const auto found = std::ranges::find_if(blanks, [text](std::string_view blank) { return text.starts_with(blank); });
  return found == blanks.end() ? 0 : found->size();
}

std::size_t trailingBlank(std::string_view text) noexcept {
  const auto found = std::ranges::find_if(blanks, [text](std::string_view blank) { return text.ends_with(blank); });
  return found == blanks.end() ? 0 : found->size();
}

}  // namespace

std::string_view trimmed(std::string_view text) noexcept {
  while (const std::size_t blank = leadingBlank(text)) text.remove_prefix(blank);
  while (const std::size_t blank = trailingBlank(text)) text.remove_suffix(blank);
  return text;
}

}  // namespace ormel::detail
