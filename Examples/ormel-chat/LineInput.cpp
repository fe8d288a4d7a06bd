#include "LineInput.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace ormel::chat {

namespace {

/// A person who has pressed no key for so long does not mind being interrupted by output.
constexpr std::chrono::milliseconds longestPause{2000};

}  // namespace

LineInput::LineInput() : isTerminal_(::isatty(STDIN_FILENO) == 1) {}

std::string LineInput::takeLine() {
  std::string line = std::move(lines_.front().text);
  lines_.pop_front();
  return line;
}

bool LineInput::isBeingTyped() const {
  return (hasTyping() || keys_.isInPaste()) && untilTypingPauses() > std::chrono::milliseconds(0);
}

std::chrono::milliseconds LineInput::untilTypingPauses() const {
  return longestPause - std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - lastKey_);
}

void LineInput::putBack(const std::string& text) {
  if (isEditing()) {
    (setAside_ ? *setAside_ : typed_).putInFront(text);
    lastKey_ = {};
  } else {
    lines_.push_front({text, {}});
  }
}

void LineInput::setAside() {
  if (!setAside_) setAside_ = std::exchange(typed_, TypedLine());
}

void LineInput::takeUp() {
  if (setAside_) typed_ = std::move(*setAside_);
  setAside_.reset();
}

void LineInput::setHidden(bool hidden) {
  isHidden_ = hidden;
  if (isTerminal_) mode_.setHidden(hidden);
}

void LineInput::readAvailable() {
  char bytes[4096];
  const auto count = ::read(STDIN_FILENO, bytes, sizeof bytes);
  if (count < 0 && (errno == EINTR || errno == EAGAIN)) return;
  if (count <= 0) {
    end();
    return;
  }
  const std::string_view read(bytes, static_cast<std::size_t>(count));
  if (!isEditing()) {
    takeBytes(read);
    return;
  }
  lastKey_ = Clock::now();
  for (const Key& key : keys_.read(read)) takeKey(key);
}

void LineInput::end() {
  ended_ = true;
  if (!partial_.empty()) lines_.push_back({std::exchange(partial_, {}), {}});
}

void LineInput::takeBytes(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto end = bytes.find('\n');
    partial_.append(bytes.substr(0, end));
    if (end == bytes.npos) return;
    lines_.push_back({std::exchange(partial_, {}), {}});
    bytes.remove_prefix(end + 1);
  }
}

void LineInput::takeKey(const Key& key) {
  if (key.kind == Key::Kind::enter) {
    lines_.push_back({typed_.text(), typed_.shown()});
    typed_.clear();
  } else if (key.kind == Key::Kind::endOfInput) {
    if (typed_.isEmpty()) end();
  } else {
    typed_.apply(key);
  }
}

}  // namespace ormel::chat
