#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-simulator/Scenario/Scenario.h"

namespace ormel::simulator {

/// Walks over the text of a scenario, piece by piece. Every failure is a `ScenarioError` with its place.
class ScenarioCursor {
 public:
  ScenarioCursor(std::string fileName, std::string_view text) : fileName_(std::move(fileName)), text_(text) {}

  /// Moves to the start of the next statement; false at the end of the text.
  bool moveToStatement();

  /// Takes the words if they are next on this line, each followed by white space or the end of the line.
  bool accept(std::string_view words);

  /// Whether the words are next; takes nothing.
  bool isNext(std::string_view words);

  /// Takes the words, which must be next.
  void expect(std::string_view words);

  /// Fails with the words that could come here.
  [[noreturn]] void failExpecting(std::initializer_list<std::string_view> choices);

  /// Whether only a comment is left on this line.
  bool atEndOfLine();
  void expectEndOfLine();

  bool atJSON();
  bool atName();

  /// A run of bytes without white space.
  std::string word(std::string_view what);
  /// Letters, digits and "_", not starting with a digit.
  std::string name(std::string_view what);
  std::size_t count(std::string_view what);
  /// "250 ms" or "3 s".
  milliseconds duration();
  /// A JSON value; an object or array may go on over the following lines.
  JSONValue json(std::string_view what);
  /// A text in double or single quotes, with its escapes resolved.
  std::string quotedText(std::string_view what);

  /// The place of the next piece of this line.
  SourcePlace place();
  /// The text from `start` to here on one line, comments and needless white space dropped.
  std::string textSince(std::size_t start) const;
  std::size_t offset() const noexcept { return at_; }

  [[noreturn]] void fail(const std::string& text);
  [[noreturn]] void failAt(SourcePlace place, const std::string& text) const;

 private:
  bool atText() const noexcept { return at_ < text_.size(); }
  void skipSpaces();
  std::string_view peekWord();
  SourcePlace placeOf(std::size_t offset);
  std::size_t endOfJSON(std::string_view what);
  unsigned char hexByte();
  char escapedByte();

  std::string fileName_;
  std::string_view text_;
  std::size_t at_ = 0;
  std::size_t knownLineStart_ = 0;
  std::size_t knownLine_ = 1;
};

}  // namespace ormel::simulator
