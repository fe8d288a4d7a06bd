#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "OrmelSDK/Base/ByteBuffer.h"
#include "OrmelSDK/JSON/JSONDecoding.h"
#include "OrmelSDK/JSON/JSONReaderLimits.h"
#include "OrmelSDK/JSON/JSONSyntax.h"

namespace ormel::detail {

/// For a text that a reader refused or would read inexactly: throws the `DecodingError` that says why it is no JSON, or
/// returns the same text, followed by `jsonPadding` bytes, in a form that the reader can read.
std::string examinedText(std::string_view text);

[[noreturn]] void failUnsupportedValue();

/// Copies texts so that readable bytes follow them, into memory that is reused.
class JSONPaddedCopy {
 public:
  std::string_view of(std::string_view text) {
    if (size_ < text.size() + jsonPadding) {
      size_ = bufferCapacity(text.size() + jsonPadding);
      bytes_ = std::make_unique_for_overwrite<char[]>(size_);
    }
    if (!text.empty()) std::memcpy(bytes_.get(), text.data(), text.size());
    return {bytes_.get(), text.size()};
  }

 private:
  std::unique_ptr<char[]> bytes_;
  std::size_t size_ = 0;
};

/// Decodes texts with a reader, `JSONTapeReader` or `JSONDocumentReader`. Each thread keeps one for texts of common
/// size.
template <typename Reader>
class JSONDecoder {
 public:
  static JSONValue decode(std::string_view text) {
    thread_local JSONPaddedCopy copy;
    if (text.size() <= keptReaderLimit) return decodeWith(threadReader(), copy.of(text));
    JSONPaddedCopy ownCopy;
    return decodePadded(ownCopy.of(text));
  }

  static JSONValue decodePadded(std::string_view text) {
    if (text.size() <= keptReaderLimit) return decodeWith(threadReader(), text);
    Reader reader;
    return decodeWith(reader, text);
  }

  static JSONValue decodePadded(ByteBuffer text) {
    if (text.size() <= keptReaderLimit) return decodeWith(threadReader(), text.view());
    Reader reader;
    // The text will be gone when its numbers are looked at.
    if (!reader.read(text.view()) || mayHoldMinusZero(text.view())) return decodeExamined(text.view());
    text = ByteBuffer();
    return reader.build();
  }

 private:
  static Reader& threadReader() {
    thread_local Reader reader;
    return reader;
  }

  static JSONValue decodeWith(Reader& reader, std::string_view text) {
    if (!reader.read(text)) [[unlikely]]
      return decodeExamined(text);
    JSONValue value = reader.build();
    // simdjson reads minus zero as an integer, and so loses its sign.
    if (reader.hasBuiltIntegerZero() && mayHoldMinusZero(text)) [[unlikely]]
      return decodeExamined(text);
    return value;
  }

  static JSONValue decodeExamined(std::string_view text) {
    const std::string readable = examinedText(text);
    Reader reader;
    if (!reader.readExamined(std::string_view(readable).substr(0, readable.size() - jsonPadding)))
      failUnsupportedValue();
    return reader.build();
  }
};

}  // namespace ormel::detail
