#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ormel::chat {

/// The doings of a person at the keyboard of a terminal that hands on every key.
struct Key {
  enum class Kind { text, paste, enter, erase, eraseWord, eraseLine, endOfInput };

  Kind kind = Kind::text;
  /// Whole characters for `text`; all that was pasted for `paste`, with plain line feeds.
  std::string text = {};

  friend bool operator==(const Key&, const Key&) = default;
};

/// Makes keys of the bytes that a terminal sends, however these are cut. Keys that have no meaning here, such as
/// arrows, give nothing. Takes time in proportion to the bytes.
class KeyReader {
 public:
  std::vector<Key> read(std::string_view bytes);

  /// Whether the end of something that was pasted has not come yet.
  bool isInPaste() const noexcept { return state_ == State::paste; }

 private:
  enum class State { plain, escape, sequence, shifted, paste };

  void take(char byte, std::vector<Key>& keys);
  void takePlain(char byte, std::vector<Key>& keys);
  void takeSequence(char byte);
  /// Gives the bytes that belong to the paste; true when it is complete.
  bool takePasted(std::string_view& bytes);
  void endText(std::vector<Key>& keys);

  State state_ = State::plain;
  std::string text_;
  std::string sequence_;
  std::string pasted_;
};

}  // namespace ormel::chat
