#pragma once

#include <string>

#include "Support/Descriptor.h"

namespace ormel::testing {

/// A listening Unix-domain stream socket at a path.
class UnixListener {
 public:
  explicit UnixListener(std::string path);

  const std::string& path() const noexcept { return path_; }
  bool hasConnectionWaiting() const { return isReadable(listening_.number()); }

  /// The next connection, non-blocking.
  Descriptor accept() const;

 private:
  std::string path_;
  Descriptor listening_;
};

}  // namespace ormel::testing
