#pragma once

#include <cstddef>
#include <string_view>

#include "OrmelSDK/Base/Error.h"

namespace ormel::control {

/// Nobody reads the output any more. It is no failure of the program.
class OutputClosed final : public Error {
 public:
  OutputClosed() : Error("Nobody reads the output any more.") {}
};

/// One of the program's output streams. SIGPIPE must be ignored.
class Output {
 public:
  explicit Output(int descriptor);

  int descriptor() const noexcept { return descriptor_; }
  bool isTerminal() const noexcept { return isTerminal_; }

  /// The width of the terminal as it is now; where it does not tell, what COLUMNS says, or else 80.
  std::size_t columns() const;

  /// Writes everything. Fails with `OutputClosed`, or with `Error`.
  void write(std::string_view bytes) const;

  /// Writes as much as is taken without waiting for the reader, when `poll` has found the stream writable; gives its
  /// count. Fails as `write`.
  std::size_t writeSome(std::string_view bytes) const;

 private:
  int descriptor_;
  bool isTerminal_;
};

}  // namespace ormel::control
