#pragma once

#include <cstddef>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "OrmelSDK/Base/ByteBuffer.h"
#include "OrmelSDK/JSON/JSONDecoding.h"
#include "OrmelSDK/Text/UTF8.h"

namespace ormel::detail {

/// Cuts a stream of bytes into lines, which are pulled:
///
///     lines.append(chunk);
///     while (auto line = lines.next()) handle(*line);
///
/// A line ends at a line feed; one carriage return ahead of it is dropped, and a line that is empty then is not
/// reported. Lines are UTF-8 text: invalid sequences are repaired. There is no limit on the length of a line, and
/// a line costs time in proportion to its length however small the pieces are in which it arrives.
///
/// *Thread safety*: none; it belongs to the one loop that reads the stream.
class AppServerJSONLineBuffer {
 public:
  /// Takes the next bytes of the stream. They are borrowed until `next` gives nothing.
  ///
  /// *Preconditions*: `next` has given nothing since the last call.
  void append(std::string_view bytes) noexcept {
    bytes_ = bytes;
    scanOffset_ = 0;
    areWholeLinesValid_ = Validity::unknown;
  }

  /// The next complete line, or nothing when the bytes have been used up.
  ///
  /// The view is valid until the next call, and `jsonPadding` readable bytes follow it, so that `decodePaddedJSON` can
  /// read the line where it stands.
  std::optional<std::string_view> next() {
    for (;;) {
      if (isCopyInUse_) dropCopy();
      const char* const start = bytes_.data() + scanOffset_;
      const std::size_t left = bytes_.size() - scanOffset_;
      const std::size_t size = findLineFeed({start, left});
      if (size == std::string_view::npos) {
        buffer_.append({start, left});
        append({});
        return std::nullopt;
      }
      scanOffset_ += size + 1;
      std::string_view line(start, size);
      if (areWholeLinesValid_ == Validity::valid && left - size >= jsonPadding) {
        line = withoutCarriageReturn(line);
      } else {
        line = checkedLine(line, left);
      }
      if (!line.empty()) return line;
    }
  }

  /// Ends the stream: the text behind the last line feed, without a carriage return at its end, or nothing if that is
  /// empty. The view is one like those of `next`. The buffer is empty for the next call.
  std::optional<std::string_view> finish();

 private:
  enum class Validity { unknown, valid, invalid };

  // A buffer that one huge line has grown beyond this size is given back.
  static constexpr std::size_t keptCapacity = std::size_t{1} << 20;

  static std::size_t findLineFeed(std::string_view bytes) noexcept {
    const void* found = bytes.empty() ? nullptr : std::memchr(bytes.data(), '\n', bytes.size());
    return found ? static_cast<std::size_t>(static_cast<const char*>(found) - bytes.data()) : std::string_view::npos;
  }

  static std::string_view withoutCarriageReturn(std::string_view line) noexcept {
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
  }

  /// The line of which `line` is the end, or all, where `left` bytes were left from its beginning.
  std::string_view checkedLine(std::string_view line, std::size_t left);
  bool areWholeLinesValid(std::string_view rest);
  std::string_view buffered(std::string_view endOfLine);
  std::string_view repaired(std::string_view line);
  void dropCopy();

  // The start of the line in progress. It never holds a line feed, so that no byte is scanned twice.
  ByteBuffer buffer_;
  std::string repaired_;
  /// The line that was given last stands in the buffer or was repaired.
  bool isCopyInUse_ = false;

  std::string_view bytes_;
  /// Start of the next line, from where its line feed is looked for.
  std::size_t scanOffset_ = 0;
  /// Whether the rest of the bytes is UTF-8 up to its last line feed; known once a line has begun in it.
  Validity areWholeLinesValid_ = Validity::unknown;
};

}  // namespace ormel::detail
