#include "RequestLog.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <string>

namespace tessella {

namespace {

constexpr std::size_t longestPart = 200;  // bytes

/// Names come from the other side: they must neither break the line nor steer the terminal.
std::string printable(std::string_view text) {
  std::string result(text.substr(0, longestPart));
  std::ranges::replace_if(
      result, [](char byte) { return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F; }, '?');
  return result;
}

}  // namespace

void RequestLog::request(std::string_view session, std::string_view subject, std::string_view outcome,
                         std::chrono::steady_clock::time_point started) {
  if (!verbose_) return;
  const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - started;
  char milliseconds[32];
  std::snprintf(milliseconds, sizeof milliseconds, " (%.1f ms)", elapsed.count());
  write(std::string(session) + ": " + printable(subject) + ": " + printable(outcome) + milliseconds);
}

void RequestLog::problem(std::string_view session, std::string_view text) {
  write(std::string(session) + ": " + printable(text));
}

void RequestLog::write(std::string_view line) {
  const std::scoped_lock lock(mutex_);
  std::cerr << std::string(line) + "\n" << std::flush;
}

}  // namespace tessella
