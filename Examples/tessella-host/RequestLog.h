#pragma once

#include <chrono>
#include <mutex>
#include <string_view>

namespace tessella {

/// One readable line on standard error for everything worth knowing. May be used from several threads.
class RequestLog {
 public:
  /// With `verbose`, every request is told; otherwise only what went wrong.
  explicit RequestLog(bool verbose) : verbose_(verbose) {}

  void request(std::string_view session, std::string_view subject, std::string_view outcome,
               std::chrono::steady_clock::time_point started);
  void problem(std::string_view session, std::string_view text);

 private:
  void write(std::string_view line);

  const bool verbose_;
  std::mutex mutex_;
};

}  // namespace tessella
