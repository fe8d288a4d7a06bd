#include "OrmelSDK/JSON/JSONSyntax.h"

#include <algorithm>

#include "OrmelSDK/JSON/JSONDecoding.h"
#include "OrmelSDK/Text/UTF8.h"

namespace ormel::detail {

namespace {

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

bool isWhitespace(char byte) { return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r'; }

int hexDigit(char byte) {
  if (isDigit(byte)) return byte - '0';
  if (byte >= 'a' && byte <= 'f') return byte - 'a' + 10;
  if (byte >= 'A' && byte <= 'F') return byte - 'A' + 10;
  return -1;
}

// Every integer of fewer digits fits into 64 bits.
constexpr std::size_t wideIntegerDigits = 19;

class Examiner {
 public:
  Examiner(std::string_view text, std::size_t maximumDepth) : text_(text), maximumDepth_(maximumDepth) {}

  JSONExamination run() {
    const std::size_t valid = validUTF8Prefix(text_);
    if (valid != text_.size()) {
      at_ = valid;
      fail("Invalid UTF-8");
    } else {
      readDocument();
    }
    return std::move(result_);
  }

 private:
  bool atEnd() const { return at_ == text_.size(); }
  char here() const { return text_[at_]; }

  bool fail(std::string_view reason) {
    if (!result_.failure) result_.failure = JSONExamination::Failure{reason, at_};
    return false;
  }

  void skipWhitespace() {
    while (!atEnd() && isWhitespace(here())) ++at_;
  }

  bool accept(char byte) {
    if (atEnd() || here() != byte) return false;
    ++at_;
    return true;
  }

  // One round reads one value or closes one container; `open_` holds the containers around it, '{' or '['.
  void readDocument() {
    skipWhitespace();
    if (atEnd()) {
      fail("Unexpected end of text");
      return;
    }
    if (!readValue()) return;
    while (!open_.empty()) {
      if (!readAfterValue()) return;
    }
    skipWhitespace();
    if (!atEnd()) fail("Unexpected text after the value");
  }

  bool readAfterValue() {
    const bool inObject = open_.back() == '{';
    skipWhitespace();
    if (atEnd()) return fail("Unexpected end of text");
    if (accept(inObject ? '}' : ']')) {
      open_.pop_back();
      fresh_ = false;
      return true;
    }
    if (!fresh_ && !accept(',')) return fail(inObject ? "Expected ',' or '}'" : "Expected ',' or ']'");
    fresh_ = false;
    skipWhitespace();
    return inObject ? readMember() : readValue();
  }

  bool readMember() {
    if (atEnd()) return fail("Unexpected end of text");
    if (here() != '"') return fail("Expected a key");
    if (!readString()) return false;
    skipWhitespace();
    if (!accept(':')) return fail(atEnd() ? "Unexpected end of text" : "Expected ':'");
    skipWhitespace();
    return readValue();
  }

  bool readValue() {
    if (atEnd()) return fail("Unexpected end of text");
    switch (here()) {
      case '{':
      case '[':
        return openContainer();
      case '"':
        return readString();
      case 't':
        return readWord("true");
      case 'f':
        return readWord("false");
      case 'n':
        return readWord("null");
      default:
        return isDigit(here()) || here() == '-' ? readNumber() : fail("Unexpected character");
    }
  }

  bool openContainer() {
    if (open_.size() == maximumDepth_) return fail("Too many nested arrays or objects");
    open_.push_back(here());
    fresh_ = true;
    ++at_;
    return true;
  }

  bool readWord(std::string_view word) {
    if (!text_.substr(at_).starts_with(word)) return fail("Unexpected character");
    at_ += word.size();
    return true;
  }

  std::size_t readDigits() {
    const std::size_t start = at_;
    while (!atEnd() && isDigit(here())) ++at_;
    return at_ - start;
  }

  bool readNumber() {
    const bool negative = accept('-');
    const bool startsWithZero = !atEnd() && here() == '0';
    const std::size_t digits = readDigits();
    if (digits == 0) return fail(atEnd() ? "Unexpected end of text" : "Expected a digit");
    if (startsWithZero && digits > 1) return fail("A number has a leading zero");
    bool integer = true;
    if (accept('.')) {
      integer = false;
      if (readDigits() == 0) return fail(atEnd() ? "Unexpected end of text" : "Expected a digit");
    }
    if (accept('e') || accept('E')) {
      integer = false;
      if (!accept('+')) accept('-');
      if (readDigits() == 0) return fail(atEnd() ? "Unexpected end of text" : "Expected a digit");
    }
    const bool fits = digits < wideIntegerDigits && !(negative && startsWithZero);
    if (integer && !fits) result_.unfitIntegerEnds.push_back(at_);
    return true;
  }

  bool readString() {
    ++at_;
    while (!atEnd()) {
      const char byte = here();
      if (byte == '"') {
        ++at_;
        return true;
      }
      if (static_cast<unsigned char>(byte) < 0x20) return fail("A control character in a string is not escaped");
      if (byte == '\\') {
        if (!readEscape()) return false;
      } else {
        ++at_;
      }
    }
    return fail("A string is not closed");
  }

  bool readEscape() {
    ++at_;
    if (atEnd()) return fail("A string is not closed");
    if (here() == 'u') return readUnicodeEscape();
    if (std::string_view("\"\\/bfnrt").find(here()) == std::string_view::npos) return fail("Invalid escape");
    ++at_;
    return true;
  }

  // The four digits behind "u", or -1.
  int readCodeUnit() {
    ++at_;
    int unit = 0;
    for (int count = 0; count < 4; ++count, ++at_) {
      const int digit = atEnd() ? -1 : hexDigit(here());
      if (digit < 0) return -1;
      unit = unit * 16 + digit;
    }
    return unit;
  }

  bool readUnicodeEscape() {
    const int unit = readCodeUnit();
    if (unit < 0) return fail("Invalid escape");
    if (unit < 0xD800 || unit > 0xDFFF) return true;
    if (unit > 0xDBFF || !accept('\\') || atEnd() || here() != 'u') return fail("A surrogate stands alone");
    const int second = readCodeUnit();
    if (second < 0) return fail("Invalid escape");
    return (second >= 0xDC00 && second <= 0xDFFF) || fail("A surrogate stands alone");
  }

  std::string_view text_;
  std::size_t maximumDepth_;
  std::size_t at_ = 0;
  std::vector<char> open_;
  // The innermost container has just been opened.
  bool fresh_ = false;
  JSONExamination result_;
};

bool endsNumber(char byte) { return !isDigit(byte) && byte != '.' && byte != 'e' && byte != 'E'; }

bool precedesValue(char byte) { return isWhitespace(byte) || byte == ':' || byte == ',' || byte == '['; }

/// Whether minus zero stands at this place, or would if it were not in a string.
bool isMinusZeroAt(std::string_view text, std::size_t at) {
  if (!text.substr(at).starts_with("-0") || (at > 0 && !precedesValue(text[at - 1]))) return false;
  return at + 2 == text.size() || endsNumber(text[at + 2]);
}

}  // namespace

JSONExamination examineJSON(std::string_view text, std::size_t maximumDepth) {
  return Examiner(text, maximumDepth).run();
}

bool mayHoldMinusZero(std::string_view text) noexcept {
  // A block at a time without a branch inside, which the compiler makes a few wide instructions of. Texts are full of
  // lone dashes, such as those in ids and dates.
  constexpr std::size_t block = 32;
  static_assert(block <= jsonPadding);
  for (std::size_t start = 0; start < text.size(); start += block) {
    const char* const bytes = text.data() + start;
    unsigned char found = 0;
    for (std::size_t at = 0; at < block; ++at) {
      found |= static_cast<unsigned char>((bytes[at] == '-') & (bytes[at + 1] == '0'));
    }
    if (found == 0) continue;
    for (std::size_t at = start; at < std::min(start + block, text.size()); ++at) {
      if (isMinusZeroAt(text, at)) return true;
    }
  }
  return false;
}

}  // namespace ormel::detail
