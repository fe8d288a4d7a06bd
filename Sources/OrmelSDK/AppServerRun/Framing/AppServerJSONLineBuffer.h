#pragma once

#include <cstddef>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "OrmelSDK/Base/ByteBuffer.h"
#include "OrmelSDK/JSON/JSONDecoding.h"
#include "OrmelSDK/Text/UTF8.h"

namespace ormel::detail {

/// Cuts a stream of bytes into lines.
///
/// A line ends at a line feed; one carriage return ahead of it is dropped, and a line that is empty then is not
/// reported. Lines are UTF-8 text: invalid sequences are repaired. There is no limit on the length of a line, and
/// a line costs time in proportion to its length however small the pieces are in which it arrives.
///
/// *Thread safety*: none; it belongs to the one loop that reads the stream.
class AppServerJSONLineBuffer {
 public:
  /// Takes the next bytes of the stream and returns the lines that they complete.
  std::vector<std::string> append(std::string_view bytes);

  /// Takes the next bytes of the stream and calls `onLine(std::string_view)` for each line that they complete.
  ///
  /// The view is valid during the call, and `jsonPadding` readable bytes follow it, so that `decodePaddedJSON` can
  /// read the line where it stands. If `onLine` throws, the rest of `bytes` is dropped.
  template <typename OnLine>
  void append(std::string_view bytes, OnLine&& onLine);

  /// The same, but `onLine` returns whether to go on. Returns what stands behind the line after which not, which is to
  /// be appended next; nothing if all bytes were taken.
  template <typename OnLine>
  std::string_view appendWhile(std::string_view bytes, OnLine&& onLine);

  /// Ends the stream: returns what stands behind the last line feed, without a carriage return at its end, or
  /// nothing if that is empty. The buffer is empty afterwards.
  std::optional<std::string> finish();

 private:
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

  // Empties the buffer also when a line's receiver throws.
  class Emptying {
   public:
    explicit Emptying(ByteBuffer& buffer) noexcept : buffer_(buffer) {}
    Emptying(const Emptying&) = delete;
    Emptying& operator=(const Emptying&) = delete;
    ~Emptying() {
      if (buffer_.capacity() > keptCapacity) {
        ByteBuffer released = std::move(buffer_);
      } else {
        buffer_.clear();
      }
    }

   private:
    ByteBuffer& buffer_;
  };

  template <typename OnLine>
  static bool report(std::string_view line, bool knownValid, OnLine& onLine) {
    if (line.empty()) return true;
    return knownValid || isValidUTF8(line) ? onLine(line) : reportRepaired(repairedUTF8(line), onLine);
  }

  template <typename OnLine>
  static bool reportRepaired(std::string repaired, OnLine& onLine) {
    const std::size_t size = repaired.size();
    repaired.append(jsonPadding, ' ');
    return onLine(std::string_view(repaired).substr(0, size));
  }

  // Reports the line that the buffer holds, without its line feed.
  template <typename OnLine>
  bool reportBuffered(bool knownValid, OnLine& onLine) {
    const Emptying emptying(buffer_);
    buffer_.room(jsonPadding);
    return report(withoutCarriageReturn(buffer_.view()), knownValid, onLine);
  }

  // The start of the line in progress. It never holds a line feed, so that no byte is scanned twice.
  ByteBuffer buffer_;
};

template <typename OnLine>
void AppServerJSONLineBuffer::append(std::string_view bytes, OnLine&& onLine) {
  appendWhile(bytes, [&onLine](std::string_view line) {
    onLine(line);
    return true;
  });
}

template <typename OnLine>
std::string_view AppServerJSONLineBuffer::appendWhile(std::string_view bytes, OnLine&& onLine) {
  std::size_t lineFeed = findLineFeed(bytes);
  if (lineFeed != std::string_view::npos && !buffer_.empty()) {
    buffer_.append(bytes.substr(0, lineFeed));
    bytes.remove_prefix(lineFeed + 1);
    if (!reportBuffered(false, onLine)) return bytes;
    lineFeed = findLineFeed(bytes);
  }
  if (lineFeed != std::string_view::npos) {
    // One check for all whole lines of these bytes: it costs less than one for each.
    const bool knownValid = isValidUTF8(bytes.substr(0, bytes.rfind('\n') + 1));
    do {
      const std::string_view line = bytes.substr(0, lineFeed);
      bytes.remove_prefix(lineFeed + 1);
      if (bytes.size() + 1 >= jsonPadding) {
        if (!report(withoutCarriageReturn(line), knownValid, onLine)) return bytes;
      } else if (!line.empty()) {
        buffer_.append(line);
        if (!reportBuffered(knownValid, onLine)) return bytes;
      }
      lineFeed = findLineFeed(bytes);
    } while (lineFeed != std::string_view::npos);
  }
  buffer_.append(bytes);
  return {};
}

}  // namespace ormel::detail
