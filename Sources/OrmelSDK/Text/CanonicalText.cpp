#include "OrmelSDK/Text/CanonicalText.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <span>
#include <utility>
#include <vector>

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

namespace {

// Collects code points in canonical order: each run of marks is sorted by combining class, marks of one class keeping
// their order. Sorting whole runs keeps a text of nothing but marks from taking quadratic time.
class CanonicalOrder {
 public:
  explicit CanonicalOrder(std::size_t textSize) { ordered_.reserve(textSize); }

  void append(utf8proc_int32_t codePoint) {
    const auto combiningClass = utf8proc_get_property(codePoint)->combining_class;
    if (combiningClass != 0) return marks_.push_back({combiningClass, codePoint});
    flushMarks();
    write(codePoint);
  }

  std::string take() {
    flushMarks();
    return std::move(ordered_);
  }

 private:
  struct Mark {
    utf8proc_propval_t combiningClass;
    utf8proc_int32_t codePoint;
  };

  void flushMarks() {
    if (marks_.size() > 1) std::ranges::stable_sort(marks_, {}, &Mark::combiningClass);
    for (const Mark& mark : marks_) write(mark.codePoint);
    marks_.clear();
  }

  void write(utf8proc_int32_t codePoint) {
    std::array<utf8proc_uint8_t, 4> bytes;
    const auto size = utf8proc_encode_char(codePoint, bytes.data());
    ordered_.append(reinterpret_cast<const char*>(bytes.data()), static_cast<std::size_t>(size));
  }

  std::string ordered_;
  std::vector<Mark> marks_;
};

// Unicode decomposes no character into more than four canonically, and promises never to.
void appendDecomposition(utf8proc_int32_t codePoint, CanonicalOrder& order) {
  std::array<utf8proc_int32_t, 4> parts;
  int boundClass = 0;
  const auto count =
      utf8proc_decompose_char(codePoint, parts.data(), std::ssize(parts), UTF8PROC_DECOMPOSE, &boundClass);
  if (count < 0 || count > std::ssize(parts)) return order.append(codePoint);
  for (const auto part : std::span(parts).first(static_cast<std::size_t>(count))) order.append(part);
}

}  // namespace

std::string canonicalForm(std::string_view text) {
  if (isASCII(text)) return std::string(text);
  CanonicalOrder order(text.size());
  for (std::string_view left = text; !left.empty();) {
    utf8proc_int32_t codePoint;
    const auto size = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(left.data()),
                                       static_cast<utf8proc_ssize_t>(left.size()), &codePoint);
    if (size <= 0) return std::string(text);
    appendDecomposition(codePoint, order);
    left.remove_prefix(static_cast<std::size_t>(size));
  }
  return order.take();
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
