#include "TerminalMode.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace ormel::chat {

namespace {

constexpr std::string_view markPastes = "\x1b[?2004h";
constexpr std::string_view leavePastesUnmarked = "\x1b[?2004l";

bool isKnownTerminal() {
  const char* name = std::getenv("TERM");
  return name && *name && std::string_view(name) != "dumb";
}

// Only who is in the foreground may set it: others would be stopped.
bool ownsTerminal() { return ::tcgetpgrp(STDIN_FILENO) == ::getpgrp(); }

void send(int output, std::string_view sequence) {
  // A terminal that is gone needs no such care.
  [[maybe_unused]] const auto count = ::write(output, sequence.data(), sequence.size());
}

}  // namespace

bool TerminalMode::takeKeys(int output) {
  struct termios settings{};
  if (!isKnownTerminal() || !ownsTerminal() || ::tcgetattr(STDIN_FILENO, &settings) != 0) return false;
  const struct termios before = settings;
  settings.c_iflag &= ~static_cast<tcflag_t>(ICRNL | INLCR | IGNCR | ISTRIP | IXON);
  settings.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ECHONL | IEXTEN);
  settings.c_cc[VMIN] = 1;
  settings.c_cc[VTIME] = 0;
  if (::tcsetattr(STDIN_FILENO, TCSANOW, &settings) != 0) return false;
  keysBefore_ = before;
  output_ = output;
  send(output_, markPastes);
  return true;
}

void TerminalMode::setHidden(bool hidden) {
  struct termios settings{};
  if (hidden == isHidden_ || takesKeys() || !ownsTerminal() || ::tcgetattr(STDIN_FILENO, &settings) != 0) return;
  if (hidden) {
    settings.c_lflag &= ~static_cast<tcflag_t>(ECHO);
  } else {
    settings.c_lflag |= static_cast<tcflag_t>(ECHO);
  }
  if (::tcsetattr(STDIN_FILENO, TCSANOW, &settings) == 0) isHidden_ = hidden;
}

void TerminalMode::restore() {
  setHidden(false);
  if (!keysBefore_ || !ownsTerminal()) return;
  send(output_, leavePastesUnmarked);
  ::tcsetattr(STDIN_FILENO, TCSANOW, &*keysBefore_);
  keysBefore_.reset();
}

}  // namespace ormel::chat
