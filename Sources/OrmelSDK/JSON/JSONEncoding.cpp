#include "OrmelSDK/JSON/JSONEncoding.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <type_traits>
#include <utility>

#include "OrmelSDK/JSON/JSONStorage.h"

namespace ormel {

namespace detail {

namespace {

enum class NonFinite { fail, writeName };

[[noreturn]] void failNonFinite() { throw EncodingError("A number that is not finite cannot be written as JSON"); }

// The character after the backslash for each byte that must be escaped; zero for a byte that is copied as it is.
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

// Sets the top bit of each byte of a word that must be escaped. Only the lowest mark is reliable: a higher one may be
// the effect of a borrow.
std::uint64_t marksOfEscapes(std::uint64_t word) noexcept {
  const auto zeros = [](std::uint64_t bytes) { return (bytes - everyByte(0x01)) & ~bytes; };
  const std::uint64_t controls = (word - everyByte(0x20)) & ~word;
  return (controls | zeros(word ^ everyByte('"')) | zeros(word ^ everyByte('\\'))) & everyByte(0x80);
}

// A word from memory as a number whose lowest byte is the first one.
std::uint64_t firstByteLowest(std::uint64_t word) noexcept {
  if constexpr (std::endian::native == std::endian::little) return word;
  std::uint64_t reversed = 0;
  for (std::size_t byte = 0; byte < sizeof word; ++byte) reversed |= (word >> 8 * byte & 0xFF) << (56 - 8 * byte);
  return reversed;
}

constexpr std::size_t longestEscape = 6;

char* writeEscape(unsigned char byte, char* out) noexcept {
  constexpr std::string_view digits = "0123456789abcdef";
  *out++ = '\\';
  *out++ = escapes[byte];
  if (escapes[byte] != 'u') return out;
  *out++ = '0';
  *out++ = '0';
  *out++ = digits[byte >> 4];
  *out++ = digits[byte & 15];
  return out;
}

struct Places {
  const char* at;
  char* out;
};

// Writes the first escape of a word that was copied whole, and continues behind it.
Places escapeInWord(Places places, std::uint64_t marks) noexcept {
  const auto count = static_cast<std::size_t>(std::countr_zero(marks)) / 8;
  const auto byte = static_cast<unsigned char>(places.at[count]);
  return {places.at + count + 1, writeEscape(byte, places.out + count)};
}

// Writes a text word by word; whole words can be read in it and behind it. There must be room for `escapedBound` bytes.
char* writeEscaped(std::string_view text, char* out) noexcept {
  constexpr std::ptrdiff_t wordSize = sizeof(std::uint64_t);
  const char* const end = text.data() + text.size();
  Places places{text.data(), out};
  while (end - places.at >= wordSize) {
    const std::uint64_t word = wordAt(places.at);
    std::memcpy(places.out, &word, sizeof word);
    const std::uint64_t marks = marksOfEscapes(firstByteLowest(word));
    places = marks == 0 ? Places{places.at + wordSize, places.out + wordSize} : escapeInWord(places, marks);
  }
  while (places.at != end) {
    const std::uint64_t word = wordAt(places.at);
    std::memcpy(places.out, &word, sizeof word);
    const std::uint64_t mask = (std::uint64_t{1} << 8 * (end - places.at)) - 1;
    const std::uint64_t marks = marksOfEscapes(firstByteLowest(word)) & mask;
    if (marks == 0) return places.out + (end - places.at);
    places = escapeInWord(places, marks);
  }
  return places.out;
}

char* writeQuoted(std::string_view text, char* out) noexcept {
  *out = '"';
  out = writeEscaped(text, out + 1);
  *out = '"';
  return out + 1;
}

// An upper bound for the size of a text when written: escapes, quotes, and the last word, which is written whole.
constexpr std::size_t escapedBound(std::size_t size) { return longestEscape * size + 2 + sizeof(std::uint64_t); }

// Fails if there is a number that is not finite.
void checkNumbers(const JSONValue& value) {
  switch (value.kind()) {
    case JSONValue::Kind::number:
      if (!std::isfinite(*value.numberValue())) failNonFinite();
      break;
    case JSONValue::Kind::object:
      for (const auto& member : JSONAccess::object(value)) checkNumbers(member.value);
      break;
    case JSONValue::Kind::array:
      for (const auto& element : JSONAccess::array(value)) checkNumbers(element);
      break;
    default:
      break;
  }
}

struct KeepGrowing {
  void operator()(ByteBuffer&) const noexcept {}
};

// Writes behind the end of a buffer. Every step takes the write position and returns the next one, so that it stays in
// a register. `filled` is called with the buffer now and then, so that it can flush a buffer that has grown.
template <typename Filled>
class Writer {
 public:
  Writer(ByteBuffer& output, NonFinite nonFinite, const Filled& filled)
      : output_(output), nonFinite_(nonFinite), filled_(filled) {}

  void write(const JSONValue& value) {
    char* const start = output_.room(1);
    limit_ = output_.data() + output_.capacity();
    commit(writeValue(value, start));
  }

 private:
  char* writeValue(const JSONValue& value, char* out) {
    switch (value.kind()) {
      case JSONValue::Kind::string:
        return writeText(storedText(JSONAccess::data(value)), out);
      case JSONValue::Kind::number:
        return writeNumber(*value.numberValue(), out);
      case JSONValue::Kind::bool_:
        return writeWord(*value.boolValue() ? "true" : "false", out);
      case JSONValue::Kind::object:
        return writeObject(JSONAccess::object(value), out);
      case JSONValue::Kind::array:
        return writeArray(JSONAccess::array(value), out);
      case JSONValue::Kind::null:
        return writeWord("null", out);
    }
    return out;
  }

  char* writeObject(const JSONObject& object, char* out) {
    if (object.empty()) return writeWord("{}", out);
    char separator = '{';
    for (const auto& [key, value] : object) {
      out = offer(writeValue(value, writeKey(separator, key, out)));
      separator = ',';
    }
    return writeByte('}', out);
  }

  char* writeKey(char separator, std::string_view key, char* out) {
    if (key.size() > partSize) return writeByte(':', writeLongText(key, writeByte(separator, out)));
    out = room(escapedBound(key.size()) + 2, out);
    *out = separator;
    out = writeQuoted(key, out + 1);
    *out = ':';
    return out + 1;
  }

  char* writeArray(const JSONArray& array, char* out) {
    if (array.empty()) return writeWord("[]", out);
    char separator = '[';
    for (const auto& element : array) {
      out = writeByte(separator, out);
      out = offer(writeValue(element, out));
      separator = ',';
    }
    return writeByte(']', out);
  }

  // Whole numbers are written in digits as long as they fit an integer: peers that read ids and times as integers
  // refuse an exponent.
  char* writeNumber(double number, char* out) {
    constexpr std::size_t longestNumber = 32;
    if (!std::isfinite(number)) return writeNonFinite(number, out);
    out = room(longestNumber, out);
    return fitsInteger(number) ? std::to_chars(out, out + longestNumber, static_cast<std::int64_t>(number)).ptr
                               : std::to_chars(out, out + longestNumber, number).ptr;
  }

  static bool fitsInteger(double number) {
    if (!(number > -0x1p63 && number < 0x1p63)) return false;
    if (number == 0) return !std::signbit(number);
    return number == static_cast<double>(static_cast<std::int64_t>(number));
  }

  char* writeNonFinite(double number, char* out) {
    if (nonFinite_ == NonFinite::fail) failNonFinite();
    return writeWord(std::isnan(number) ? "nan" : number > 0 ? "inf" : "-inf", out);
  }

  char* writeText(std::string_view text, char* out) {
    if (text.size() > partSize) return writeLongText(text, out);
    return writeQuoted(text, room(escapedBound(text.size()), out));
  }

  // Written in parts: reserving room for the worst case, all escapes, would take six times the size of the text.
  char* writeLongText(std::string_view text, char* out) {
    if constexpr (std::is_same_v<Filled, KeepGrowing>) out = room(text.size() + escapedBound(partSize), out);
    out = writeByte('"', out);
    for (; text.size() > partSize; text.remove_prefix(partSize)) {
      out = offer(writeEscaped(text.substr(0, partSize), room(escapedBound(partSize), out)));
    }
    return writeByte('"', writeEscaped(text, room(escapedBound(text.size()), out)));
  }

  char* writeWord(std::string_view word, char* out) {
    out = room(word.size(), out);
    std::memcpy(out, word.data(), word.size());
    return out + word.size();
  }

  char* writeByte(char byte, char* out) {
    out = room(1, out);
    *out = byte;
    return out + 1;
  }

  char* room(std::size_t count, char* out) {
    if (static_cast<std::size_t>(limit_ - out) >= count) [[likely]]
      return out;
    commit(out);
    out = output_.room(count);
    limit_ = output_.data() + output_.capacity();
    return out;
  }

  char* offer(char* out) {
    if constexpr (std::is_same_v<Filled, KeepGrowing>) return out;
    commit(out);
    filled_(output_);
    return output_.data() + output_.size();
  }

  void commit(char* out) { output_.commit(static_cast<std::size_t>(out - output_.data()) - output_.size()); }

  static constexpr std::size_t partSize = 4096;

  ByteBuffer& output_;
  NonFinite nonFinite_;
  const Filled& filled_;
  char* limit_ = nullptr;
};

}  // namespace

void encodeJSON(const JSONValue& value, ByteBuffer& output) {
  Writer(output, NonFinite::fail, KeepGrowing()).write(value);
}

void encodeJSONInPieces(const JSONValue& value, ByteBuffer& piece, std::size_t pieceSize,
                        const std::function<void(ByteBuffer&)>& takePiece) {
  bool checked = false;
  const auto filled = [&](ByteBuffer& text) {
    if (text.size() < pieceSize) [[likely]]
      return;
    if (!std::exchange(checked, true)) checkNumbers(value);
    takePiece(text);
  };
  Writer(piece, NonFinite::fail, filled).write(value);
  takePiece(piece);
}

}  // namespace detail

std::string JSONValue::encode() const {
  detail::ByteBuffer output;
  detail::encodeJSON(*this, output);
  return std::string(output.view());
}

std::ostream& operator<<(std::ostream& stream, const JSONValue& value) {
  detail::ByteBuffer output;
  detail::Writer(output, detail::NonFinite::writeName, detail::KeepGrowing()).write(value);
  return stream << output.view();
}

}  // namespace ormel
