#include "Console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "ForeignText.h"

namespace ormel::chat {

namespace {

constexpr std::size_t mostPending = 65536;

bool mayColour() {
  const char* noColour = std::getenv("NO_COLOR");
  const char* terminal = std::getenv("TERM");
  return !(noColour && *noColour) && terminal && *terminal && std::string_view(terminal) != "dumb";
}

std::string_view codeOf(Style style) {
  switch (style) {
    case Style::plain:
      break;
    case Style::dim:
      return "\x1b[2m";
    case Style::bold:
      return "\x1b[1m";
    case Style::green:
      return "\x1b[32m";
    case Style::yellow:
      return "\x1b[33m";
    case Style::red:
      return "\x1b[31m";
    case Style::cyan:
      return "\x1b[36m";
  }
  return {};
}

}  // namespace

Console::Console(int descriptor, Readers readers)
    : descriptor_(descriptor),
      isTerminal_(::isatty(descriptor) == 1),
      isForPeople_(isTerminal_ || readers == Readers::people),
      colours_(isTerminal_ && mayColour()) {}

int Console::columns() const noexcept {
  constexpr int usualColumns = 80;
  if (!isTerminal_) return 0;
  struct winsize size{};
  return ::ioctl(descriptor_, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usualColumns;
}

void Console::write(std::string_view text, Style style) {
  if (text.empty()) return;
  const auto code = colours_ ? codeOf(style) : std::string_view();
  pending_.append(code);
  if (isForPeople_) {
    append(harmless(text));
  } else {
    append(text);
  }
  if (!code.empty()) pending_.append("\x1b[0m");
}

void Console::append(std::string_view text) {
  // However much comes at once, little of it is kept here.
  if (pending_.size() > mostPending) flush();
  pending_.append(text);
  const auto last = text.find_last_not_of('\n');
  const auto trailing = static_cast<int>(text.size() - (last == text.npos ? 0 : last + 1));
  lineFeeds_ = std::min(2, last == text.npos ? lineFeeds_ + trailing : trailing);
}

void Console::erase(int columns) {
  for (; columns > 0; --columns) append("\b \b");
}

void Console::endLine() {
  if (lineFeeds_ == 0) append("\n");
}

void Console::beginAsking() {
  endLine();
  const auto code = colours_ ? codeOf(Style::yellow) : std::string_view();
  pending_.append(code);
  append(margin);
  if (!code.empty()) pending_.append("\x1b[0m");
}

void Console::line(std::string_view text, Style style) {
  endLine();
  write(text, style);
  append("\n");
}

void Console::separate() {
  endLine();
  if (lineFeeds_ < 2) append("\n");
}

void Console::flush() {
  std::string_view rest = pending_;
  while (!rest.empty()) {
    const auto count = ::write(descriptor_, rest.data(), rest.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw std::system_error(errno, std::generic_category(), "Writing the output failed");
    rest.remove_prefix(static_cast<std::size_t>(count));
  }
  pending_.clear();
}

}  // namespace ormel::chat
