#include "Output.h"

#include <limits.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string>

namespace ormel::control {

namespace {

constexpr std::size_t usualColumns = 80;

[[noreturn]] void failToWrite(int error) {
  if (error == EPIPE) throw OutputClosed();
  throw Error(std::string("Writing the output failed: ") + std::strerror(error));
}

}  // namespace

Output::Output(int descriptor) : descriptor_(descriptor), isTerminal_(::isatty(descriptor) == 1) {}

std::size_t Output::columns() const {
  struct winsize size{};
  if (::ioctl(descriptor_, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  const char* text = std::getenv("COLUMNS");
  std::size_t told = 0;
  if (text) std::from_chars(text, text + std::strlen(text), told);
  return told > 0 ? told : usualColumns;
}

void Output::write(std::string_view bytes) const {
  while (!bytes.empty()) {
    const auto count = ::write(descriptor_, bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      failToWrite(errno);
    }
  }
}

std::size_t Output::writeSome(std::string_view bytes) const {
  // A pipe that is writable has room for so many.
  const std::string_view some = bytes.substr(0, PIPE_BUF);
  const auto count = ::write(descriptor_, some.data(), some.size());
  if (count >= 0) return static_cast<std::size_t>(count);
  if (errno != EINTR && errno != EAGAIN) failToWrite(errno);
  return 0;
}

}  // namespace ormel::control
