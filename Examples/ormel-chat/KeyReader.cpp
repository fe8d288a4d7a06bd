#include "KeyReader.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace ormel::chat {

namespace {

constexpr char escapeKey = '\x1b';
constexpr std::string_view pasteBegins = "200~";
constexpr std::string_view pasteEnds = "\x1b[201~";

std::optional<Key::Kind> controlKey(char byte) {
  switch (byte) {
    case '\r':
    case '\n':
      return Key::Kind::enter;
    case '\x7f':
    case '\b':
      return Key::Kind::erase;
    case '\x17':
      return Key::Kind::eraseWord;
    case '\x15':
      return Key::Kind::eraseLine;
    case '\x04':
      return Key::Kind::endOfInput;
    default:
      return std::nullopt;
  }
}

bool isText(char byte) { return static_cast<unsigned char>(byte) >= 0x20 || byte == '\t'; }

/// How many bytes at the end begin a character whose rest is missing.
std::size_t unfinishedBytes(std::string_view text) {
  for (std::size_t back = 1; back <= std::min<std::size_t>(3, text.size()); ++back) {
    const auto byte = static_cast<unsigned char>(text[text.size() - back]);
    if ((byte & 0xc0) == 0x80) continue;
    const std::size_t size = byte >= 0xf0 ? 4 : byte >= 0xe0 ? 3 : byte >= 0xc0 ? 2 : 1;
    return size > back ? back : 0;
  }
  return 0;
}

/// A terminal sends carriage returns for the line feeds of what is pasted.
std::string withLineFeeds(std::string_view text) {
  std::string lines;
  lines.reserve(text.size());
  for (std::size_t index = 0; index < text.size(); ++index) {
    const bool isReturn = text[index] == '\r';
    if (isReturn && index + 1 < text.size() && text[index + 1] == '\n') ++index;
    lines.push_back(isReturn ? '\n' : text[index]);
  }
  return lines;
}

}  // namespace

std::vector<Key> KeyReader::read(std::string_view bytes) {
  std::vector<Key> keys;
  while (!bytes.empty()) {
    if (state_ == State::paste) {
      if (takePasted(bytes)) keys.push_back({Key::Kind::paste, withLineFeeds(std::exchange(pasted_, {}))});
    } else {
      take(bytes.front(), keys);
      bytes.remove_prefix(1);
    }
  }
  const std::size_t unfinished = unfinishedBytes(text_);
  std::string rest = text_.substr(text_.size() - unfinished);
  text_.resize(text_.size() - unfinished);
  endText(keys);
  text_ = std::move(rest);
  return keys;
}

void KeyReader::take(char byte, std::vector<Key>& keys) {
  switch (state_) {
    case State::plain:
      takePlain(byte, keys);
      break;
    case State::escape:
      state_ = byte == '[' ? State::sequence : byte == 'O' ? State::shifted : State::plain;
      if (state_ == State::plain) takePlain(byte, keys);
      break;
    case State::sequence:
      takeSequence(byte);
      break;
    default:
      state_ = State::plain;
  }
}

void KeyReader::takePlain(char byte, std::vector<Key>& keys) {
  if (isText(byte) && byte != '\x7f') {
    text_.push_back(byte);
    return;
  }
  endText(keys);
  if (byte == escapeKey) {
    state_ = State::escape;
    sequence_.clear();
  } else if (const auto kind = controlKey(byte)) {
    keys.push_back({*kind});
  }
}

void KeyReader::takeSequence(char byte) {
  sequence_.push_back(byte);
  const bool isLast = byte >= 0x40 && byte <= 0x7e;
  const bool isBroken = byte < 0x20 || byte > 0x7e;
  if (isLast || isBroken) state_ = sequence_ == pasteBegins ? State::paste : State::plain;
}

bool KeyReader::takePasted(std::string_view& bytes) {
  const std::size_t before = pasted_.size();
  // The end may have begun in what was read before.
  const std::size_t from = before - std::min(before, pasteEnds.size() - 1);
  pasted_.append(bytes);
  const auto end = pasted_.find(pasteEnds, from);
  if (end == pasted_.npos) {
    bytes = {};
    return false;
  }
  bytes.remove_prefix(end + pasteEnds.size() - before);
  pasted_.resize(end);
  state_ = State::plain;
  return true;
}

void KeyReader::endText(std::vector<Key>& keys) {
  if (!text_.empty()) keys.push_back({Key::Kind::text, std::exchange(text_, {})});
}

}  // namespace ormel::chat
