#pragma once

#include <mutex>
#include <string>
#include <string_view>

namespace ormel::detail {

/// Collects the bytes of a stream on one thread for a reader on another, without a limit.
///
/// *Thread safety*: all members may be called from any thread.
class AppServerLockedData {
 public:
  void append(std::string_view bytes);

  /// Everything appended until now as text, with invalid UTF-8 repaired.
  std::string string() const;

 private:
  mutable std::mutex lock_;
  std::string data_;
};

}  // namespace ormel::detail
