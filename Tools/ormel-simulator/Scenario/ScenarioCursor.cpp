#include "ormel-simulator/Scenario/ScenarioCursor.h"

#include <algorithm>
#include <charconv>
#include <memory>

namespace ormel::simulator {

namespace {

bool isSpace(char byte) { return byte == ' ' || byte == '\t' || byte == '\r'; }
bool isWhite(char byte) { return isSpace(byte) || byte == '\n'; }
bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }
bool startsName(char byte) { return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_'; }

// Walks over JSON, or over a statement, telling text in double quotes from comments and the rest.
class QuoteTracker {
 public:
  enum class Part { plain, quoted, comment };

  Part next(char byte) {
    if (comment_) {
      comment_ = byte != '\n';
      return comment_ ? Part::comment : Part::plain;
    }
    if (quote_ != 0) {
      if (escaped_) {
        escaped_ = false;
      } else if (byte == '\\') {
        escaped_ = true;
      } else if (byte == quote_) {
        quote_ = 0;
      }
      return Part::quoted;
    }
    if (byte == '"' || byte == '\'') {
      quote_ = byte;
      return Part::quoted;
    }
    comment_ = byte == '#';
    return comment_ ? Part::comment : Part::plain;
  }

  bool insideQuotes() const { return quote_ != 0; }

 private:
  char quote_ = 0;
  bool escaped_ = false;
  bool comment_ = false;
};

}  // namespace

bool ScenarioCursor::moveToStatement() {
  while (atText()) {
    if (isWhite(text_[at_])) {
      ++at_;
    } else if (text_[at_] == '#') {
      at_ = std::min(text_.find('\n', at_), text_.size());
    } else {
      return true;
    }
  }
  return false;
}

void ScenarioCursor::skipSpaces() {
  while (atText() && isSpace(text_[at_])) ++at_;
}

std::string_view ScenarioCursor::peekWord() {
  skipSpaces();
  std::size_t end = at_;
  while (end < text_.size() && !isWhite(text_[end])) ++end;
  return text_.substr(at_, end - at_);
}

bool ScenarioCursor::accept(std::string_view words) {
  const std::size_t start = at_;
  while (!words.empty()) {
    const std::size_t length = std::min(words.find(' '), words.size());
    if (peekWord() != words.substr(0, length)) {
      at_ = start;
      return false;
    }
    at_ += length;
    words.remove_prefix(std::min(length + 1, words.size()));
  }
  return true;
}

bool ScenarioCursor::isNext(std::string_view words) {
  const std::size_t start = at_;
  const bool next = accept(words);
  at_ = start;
  return next;
}

void ScenarioCursor::expect(std::string_view words) {
  if (!accept(words)) failExpecting({words});
}

void ScenarioCursor::failExpecting(std::initializer_list<std::string_view> choices) {
  std::string text = "expected ";
  std::size_t index = 0;
  for (std::string_view choice : choices) {
    if (index > 0) text += index + 1 == choices.size() ? " or " : ", ";
    text.append("\"").append(choice).append("\"");
    ++index;
  }
  const bool nothing = atEndOfLine();
  text += nothing ? ", but the line ends here" : ", not \"" + std::string(peekWord()) + "\"";
  fail(text);
}

bool ScenarioCursor::atEndOfLine() {
  skipSpaces();
  return !atText() || text_[at_] == '\n' || text_[at_] == '#';
}

void ScenarioCursor::expectEndOfLine() {
  if (!atEndOfLine()) fail("expected the end of the line, not \"" + std::string(peekWord()) + "\"");
}

bool ScenarioCursor::atJSON() {
  if (atEndOfLine()) return false;
  const char byte = text_[at_];
  if (byte == '{' || byte == '[' || byte == '"' || byte == '-' || isDigit(byte)) return true;
  const std::string_view next = peekWord();
  return next == "true" || next == "false" || next == "null";
}

bool ScenarioCursor::atName() { return !atEndOfLine() && !atJSON() && startsName(text_[at_]); }

std::string ScenarioCursor::word(std::string_view what) {
  if (atEndOfLine()) fail("expected " + std::string(what) + ", but the line ends here");
  std::string taken(peekWord());
  at_ += taken.size();
  return taken;
}

std::string ScenarioCursor::name(std::string_view what) {
  const SourcePlace start = place();
  std::string taken = word(what);
  const bool valid = startsName(taken[0]) && std::all_of(taken.begin(), taken.end(),
                                                         [](char byte) { return startsName(byte) || isDigit(byte); });
  if (!valid) failAt(start, "\"" + taken + "\" is no name: use letters, digits and \"_\"");
  return taken;
}

std::size_t ScenarioCursor::count(std::string_view what) {
  const SourcePlace start = place();
  const std::string taken = word(what);
  std::size_t value = 0;
  const auto [end, error] = std::from_chars(taken.data(), taken.data() + taken.size(), value);
  if (error != std::errc() || end != taken.data() + taken.size()) {
    failAt(start, "expected " + std::string(what) + ", not \"" + taken + "\"");
  }
  return value;
}

milliseconds ScenarioCursor::duration() {
  constexpr std::size_t secondsInADay = 86'400;
  const SourcePlace start = place();
  const std::size_t value = count("a duration such as 250 ms or 3 s");
  const bool inSeconds = accept("s");
  if (!inSeconds && !accept("ms")) failExpecting({"ms", "s"});
  if (value > (inSeconds ? secondsInADay : secondsInADay * 1000)) failAt(start, "a duration is at most a day");
  return milliseconds(inSeconds ? value * 1000 : value);
}

std::size_t ScenarioCursor::endOfJSON(std::string_view what) {
  QuoteTracker tracker;
  std::size_t depth = 0;
  for (std::size_t end = at_; end < text_.size(); ++end) {
    const char byte = text_[end];
    if (depth == 0 && !tracker.insideQuotes() && isWhite(byte)) return end;
    const auto part = tracker.next(byte);
    if (depth == 0 && part == QuoteTracker::Part::quoted && !tracker.insideQuotes()) return end + 1;
    if (part != QuoteTracker::Part::plain) continue;
    if (byte == '{' || byte == '[') ++depth;
    if (byte != '}' && byte != ']') continue;
    if (depth <= 1) return end + 1;
    --depth;
  }
  if (depth > 0 || tracker.insideQuotes()) fail("the " + std::string(what) + " that starts here has no end");
  return text_.size();
}

JSONValue ScenarioCursor::json(std::string_view what) {
  if (!atJSON()) fail("expected " + std::string(what) + " as JSON");
  const std::size_t start = at_;
  const std::size_t end = endOfJSON(what);
  std::string text(text_.substr(start, end - start));
  // Comments between the lines of a payload become white space, so that every offset stays.
  QuoteTracker tracker;
  for (char& byte : text) {
    if (tracker.next(byte) == QuoteTracker::Part::comment) byte = ' ';
  }
  try {
    JSONValue value = JSONValue::decode(text);
    at_ = end;
    return value;
  } catch (const DecodingError& error) {
    const auto syntax = std::dynamic_pointer_cast<const JSONSyntaxError>(error.context().underlyingError);
    if (!syntax) fail("this JSON cannot be read: " + error.description());
    failAt(placeOf(start + std::min(syntax->byteOffset(), text.size())), "not JSON: " + syntax->reason());
  }
}

unsigned char ScenarioCursor::hexByte() {
  unsigned int value = 0;
  const std::string_view digits = text_.substr(at_, 2);
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  if (error != std::errc() || digits.size() != 2 || end != digits.data() + 2) {
    fail("\"\\x\" needs two hexadecimal digits");
  }
  at_ += 2;
  return static_cast<unsigned char>(value);
}

char ScenarioCursor::escapedByte() {
  const char byte = atText() ? text_[at_] : '\n';
  ++at_;
  switch (byte) {
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    case 'x':
      return static_cast<char>(hexByte());
    case '\\':
    case '"':
    case '\'':
      return byte;
    default:
      --at_;
      fail(R"(the escapes of a text are \n, \r, \t, \\, \", \' and \xHH)");
  }
}

std::string ScenarioCursor::quotedText(std::string_view what) {
  if (atEndOfLine() || (text_[at_] != '"' && text_[at_] != '\'')) fail("expected " + std::string(what) + " in quotes");
  const SourcePlace start = place();
  const char quote = text_[at_++];
  std::string text;
  while (atText() && text_[at_] != '\n') {
    const char byte = text_[at_++];
    if (byte == quote) return text;
    text += byte == '\\' ? escapedByte() : byte;
  }
  failAt(start, "this text has no closing quote on its line");
}

SourcePlace ScenarioCursor::placeOf(std::size_t offset) {
  for (std::size_t at = knownLineStart_; (at = text_.find('\n', at)) < offset;) {
    knownLineStart_ = ++at;
    ++knownLine_;
  }
  return {knownLine_, offset - knownLineStart_ + 1};
}

SourcePlace ScenarioCursor::place() {
  skipSpaces();
  return placeOf(at_);
}

std::string ScenarioCursor::textSince(std::size_t start) const {
  std::string text;
  QuoteTracker tracker;
  for (char byte : text_.substr(start, at_ - start)) {
    const auto part = tracker.next(byte);
    if (part == QuoteTracker::Part::comment) continue;
    const bool white = part == QuoteTracker::Part::plain && isWhite(byte);
    if (!white) {
      text += byte;
    } else if (!text.empty() && text.back() != ' ') {
      text += ' ';
    }
  }
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return text;
}

void ScenarioCursor::fail(const std::string& text) { failAt(place(), text); }

void ScenarioCursor::failAt(SourcePlace place, const std::string& text) const {
  throw ScenarioError(fileName_, place, text);
}

}  // namespace ormel::simulator
