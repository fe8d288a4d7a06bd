#include "OrmelSDK/JSONEncoding.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <ostream>

#include "OrmelSDK/JSONStorage.h"

namespace ormel {

namespace detail {

namespace {

enum class NonFinite { fail, writeName };

// What follows the backslash for each byte that must be escaped; zero for a byte that stands as it is.
constexpr std::array<char, 256> escapes = [] {
  std::array<char, 256> table{};
  for (std::size_t control = 0; control < 0x20; ++control) table[control] = 'u';
  table['\b'] = 'b';
  table['\f'] = 'f';
  table['\n'] = 'n';
  table['\r'] = 'r';
  table['\t'] = 't';
  table['"'] = '"';
  table['\\'] = '\\';
  return table;
}();

constexpr std::uint64_t everyByte(unsigned char byte) { return 0x0101010101010101u * byte; }

// Whether one of eight bytes must be escaped.
bool needsEscape(std::uint64_t word) noexcept {
  const auto hasZero = [](std::uint64_t bytes) { return (bytes - everyByte(0x01)) & ~bytes; };
  const std::uint64_t controls = (word - everyByte(0x20)) & ~word;
  return ((controls | hasZero(word ^ everyByte('"')) | hasZero(word ^ everyByte('\\'))) & everyByte(0x80)) != 0;
}

class Writer {
 public:
  Writer(ByteBuffer& output, NonFinite nonFinite) : output_(output), nonFinite_(nonFinite) {}

  void write(const JSONValue& value) {
    switch (value.kind()) {
      case JSONValue::Kind::string:
        return writeText(storedText(JSONAccess::data(value)));
      case JSONValue::Kind::number:
        return writeNumber(*value.numberValue());
      case JSONValue::Kind::bool_:
        return output_.append(*value.boolValue() ? std::string_view("true") : std::string_view("false"));
      case JSONValue::Kind::object:
        return writeObject(JSONAccess::object(value));
      case JSONValue::Kind::array:
        return writeArray(JSONAccess::array(value));
      case JSONValue::Kind::null:
        return output_.append("null");
    }
  }

 private:
  void writeObject(const JSONObject& object) {
    char separator = '{';
    for (const auto& [key, value] : object) {
      output_.append(separator);
      writeText(key);
      output_.append(':');
      write(value);
      separator = ',';
    }
    if (object.empty()) output_.append('{');
    output_.append('}');
  }

  void writeArray(const JSONArray& array) {
    char separator = '[';
    for (const auto& element : array) {
      output_.append(separator);
      write(element);
      separator = ',';
    }
    if (array.empty()) output_.append('[');
    output_.append(']');
  }

  // Whole numbers are written in digits as long as they fit an integer: peers that read ids and times as integers
  // refuse an exponent.
  void writeNumber(double number) {
    constexpr std::size_t longestNumber = 32;
    if (!std::isfinite(number)) return writeNonFinite(number);
    char* start = output_.room(longestNumber);
    const bool asInteger =
        number > -0x1p63 && number < 0x1p63 && number == std::trunc(number) && !(number == 0 && std::signbit(number));
    const auto written = asInteger ? std::to_chars(start, start + longestNumber, static_cast<std::int64_t>(number))
                                   : std::to_chars(start, start + longestNumber, number);
    output_.commit(static_cast<std::size_t>(written.ptr - start));
  }

  void writeNonFinite(double number) {
    if (nonFinite_ == NonFinite::fail) throw EncodingError("A number that is not finite cannot be written as JSON");
    output_.append(std::isnan(number) ? "nan" : number > 0 ? "inf" : "-inf");
  }

  // A text with nothing to escape, which is nearly every one, is copied word by word and never looked at by the byte.
  void writeText(std::string_view text) {
    constexpr std::size_t quotes = 2;
    char* const out = output_.room(text.size() + quotes + textSlack);
    *out = '"';
    if (!copyIfClean(text, out + 1)) return writeEscaping(text);
    out[1 + text.size()] = '"';
    output_.commit(text.size() + quotes);
  }

  // Behind `out` there is room for a whole word more than the text. False if something must be escaped.
  static bool copyIfClean(std::string_view text, char* out) {
    if (text.size() < sizeof(std::uint64_t)) {
      const std::uint64_t word = wordAt(text.data());
      const std::uint64_t mask = firstBytes(text.size());
      std::memcpy(out, &word, sizeof word);
      return !needsEscape((word & mask) | (everyByte('x') & ~mask));
    }
    const char* at = text.data();
    const char* const last = at + text.size() - sizeof(std::uint64_t);
    for (; at < last; at += sizeof(std::uint64_t), out += sizeof(std::uint64_t)) {
      if (!copyWordIfClean(at, out)) return false;
    }
    return copyWordIfClean(last, out - (at - last));
  }

  static bool copyWordIfClean(const char* at, char* out) {
    const std::uint64_t word = wordAt(at);
    std::memcpy(out, &word, sizeof word);
    return !needsEscape(word);
  }

  void writeEscaping(std::string_view text) {
    output_.append('"');
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end) {
      at = copyUntilEscape(at, end);
      if (at != end) writeEscape(static_cast<unsigned char>(*at++));
    }
    output_.append('"');
  }

  // Copies up to the first byte that must be escaped and returns its place.
  const char* copyUntilEscape(const char* at, const char* end) {
    char* out = output_.room(static_cast<std::size_t>(end - at));
    const char* const start = at;
    while (end - at >= std::ptrdiff_t{sizeof(std::uint64_t)} && copyWordIfClean(at, out)) {
      at += sizeof(std::uint64_t);
      out += sizeof(std::uint64_t);
    }
    while (at != end && escapes[static_cast<unsigned char>(*at)] == 0) *out++ = *at++;
    output_.commit(static_cast<std::size_t>(at - start));
    return at;
  }

  void writeEscape(unsigned char byte) {
    constexpr std::string_view digits = "0123456789abcdef";
    output_.append('\\');
    output_.append(escapes[byte]);
    if (escapes[byte] != 'u') return;
    output_.append("00");
    output_.append(digits[byte >> 4]);
    output_.append(digits[byte & 15]);
  }

  ByteBuffer& output_;
  NonFinite nonFinite_;
};

}  // namespace

void encodeJSON(const JSONValue& value, ByteBuffer& output) { Writer(output, NonFinite::fail).write(value); }

}  // namespace detail

std::string JSONValue::encode() const {
  detail::ByteBuffer output;
  detail::encodeJSON(*this, output);
  return std::string(output.view());
}

std::ostream& operator<<(std::ostream& stream, const JSONValue& value) {
  detail::ByteBuffer output;
  detail::Writer(output, detail::NonFinite::writeName).write(value);
  return stream << output.view();
}

}  // namespace ormel
