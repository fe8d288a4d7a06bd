#include "ThreadTitle.h"

#include <algorithm>
#include <cstdint>

#include "Texts.h"

namespace ormel::chat {

namespace {

constexpr std::int64_t minute = 60;
constexpr std::int64_t hour = 60 * minute;
constexpr std::int64_t day = 24 * hour;

std::string onOneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char byte) { return byte == '\n' || byte == '\r' || byte == '\t'; }, ' ');
  return shortened(trimmed(text));
}

}  // namespace

std::string titleOf(const OrmelThreadRecord& thread) {
  std::string title = onOneLine(thread.name.value_or(""));
  if (title.empty()) title = onOneLine(thread.preview);
  return title.empty() ? "(nothing was said)" : title;
}

std::string ageOf(const OrmelThreadRecord& thread, double now) {
  const double time = thread.recencyAt.value_or(thread.updatedAt);
  if (time <= 0) return "";
  const auto seconds = static_cast<std::int64_t>(std::max(now - time, 0.0));
  if (seconds < minute) return "just now";
  if (seconds < hour) return std::to_string(seconds / minute) + " min ago";
  if (seconds < day) return std::to_string(seconds / hour) + " h ago";
  return std::to_string(seconds / day) + " d ago";
}

}  // namespace ormel::chat
