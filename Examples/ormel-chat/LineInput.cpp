#include "LineInput.h"

#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace ormel::chat {

LineInput::LineInput() : isTerminal_(::isatty(STDIN_FILENO) == 1) {}

std::string LineInput::takeLine() {
  std::string line = std::move(lines_.front());
  lines_.pop_front();
  return line;
}

void LineInput::readAvailable() {
  char bytes[4096];
  const auto count = ::read(STDIN_FILENO, bytes, sizeof bytes);
  if (count < 0 && (errno == EINTR || errno == EAGAIN)) return;
  if (count <= 0) {
    ended_ = true;
    if (!partial_.empty()) lines_.push_back(std::exchange(partial_, {}));
    return;
  }
  partial_.append(bytes, static_cast<std::size_t>(count));
  std::size_t begin = 0;
  for (std::size_t end; (end = partial_.find('\n', begin)) != std::string::npos; begin = end + 1) {
    lines_.push_back(partial_.substr(begin, end - begin));
  }
  partial_.erase(0, begin);
}

namespace {

bool setEcho(bool on) {
  struct termios settings{};
  if (::tcgetattr(STDIN_FILENO, &settings) != 0) return false;
  if (on) {
    settings.c_lflag |= static_cast<tcflag_t>(ECHO);
  } else {
    settings.c_lflag &= ~static_cast<tcflag_t>(ECHO);
  }
  return ::tcsetattr(STDIN_FILENO, TCSANOW, &settings) == 0;
}

}  // namespace

HiddenTyping::HiddenTyping() : hidden_(setEcho(false)) {}

HiddenTyping::~HiddenTyping() {
  if (hidden_) setEcho(true);
}

}  // namespace ormel::chat
