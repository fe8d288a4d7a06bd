#pragma once

#include <fcntl.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <thread>

namespace ormel::chat {

/// A terminal that only keeps what is written to it.
class PseudoTerminal {
 public:
  explicit PseudoTerminal(int columns) : master_(::posix_openpt(O_RDWR | O_NOCTTY)) {
    if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0) fail();
    descriptor_ = ::open(::ptsname(master_), O_RDWR | O_NOCTTY);
    struct termios settings{};
    if (descriptor_ < 0 || ::tcgetattr(descriptor_, &settings) != 0) fail();
    ::cfmakeraw(&settings);
    struct winsize size{};
    size.ws_col = static_cast<unsigned short>(columns);
    size.ws_row = 24;
    if (::tcsetattr(descriptor_, TCSANOW, &settings) != 0 || ::ioctl(master_, TIOCSWINSZ, &size) != 0) fail();
    reader_ = std::thread([this] { readAll(); });
  }
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;
  ~PseudoTerminal() {
    finish();
    ::close(master_);
  }

  /// To write to; valid until `finish`.
  int descriptor() const noexcept { return descriptor_; }

  /// All that was written.
  const std::string& finish() {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
    if (reader_.joinable()) reader_.join();
    return written_;
  }

 private:
  [[noreturn]] static void fail() { throw std::system_error(errno, std::generic_category(), "pseudo-terminal"); }

  void readAll() {
    char block[4096];
    for (ssize_t count = 0; (count = ::read(master_, block, sizeof block)) > 0;) {
      written_.append(block, static_cast<std::size_t>(count));
    }
  }

  int master_;
  int descriptor_ = -1;
  std::string written_;
  std::thread reader_;
};

}  // namespace ormel::chat
