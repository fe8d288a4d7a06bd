#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "OrmelSDK/Base/ByteBuffer.h"

namespace ormel {

/// Splits a descriptor's input into lines of any length; scans each byte once.
class LineReader {
 public:
  explicit LineReader(int descriptor) noexcept : descriptor_(descriptor) {}

  /// The next line without its line end (a line feed, or a carriage return and line feed), or nothing at the end of
  /// input; a last line needs no line end. Input that cannot be read has ended.
  ///
  /// The view is valid until the next call, and `detail::jsonPadding` bytes behind it can be read.
  std::optional<std::string_view> next();

 private:
  std::optional<std::string_view> takeLine() noexcept;
  std::optional<std::string_view> takeRest() noexcept;
  void fill();

  int descriptor_;
  detail::ByteBuffer buffer_;
  /// Start of the next line, and the offset up to which it is known to hold no line feed.
  std::size_t start_ = 0;
  std::size_t scanned_ = 0;
  bool atEnd_ = false;
  bool pipeGrown_ = false;
};

}  // namespace ormel
