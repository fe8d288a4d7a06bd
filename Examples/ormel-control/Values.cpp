#include "Values.h"

#include <algorithm>
#include <array>
#include <ctime>

namespace ormel::control {

namespace {

/// From 2001 to 5138: a number below is a duration or an index, and one beyond counts milliseconds.
constexpr double earliestTime = 1e9;
constexpr double latestTime = 1e11;

}  // namespace

std::string joined(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : ", ") + part;
  return text;
}

std::string numberText(double value) { return JSONValue(value).encode(); }

std::string timeText(double seconds) {
  if (!(seconds >= earliestTime && seconds <= latestTime)) return numberText(seconds);
  const auto time = static_cast<std::time_t>(seconds);
  struct tm parts{};
  ::gmtime_r(&time, &parts);
  std::array<char, 64> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M UTC", &parts);
  return text.data();
}

std::string plainText(const JSONValue& value) {
  const auto text = value.stringValue();
  return text ? std::string(*text) : value.encode();
}

std::vector<JSONMember> sortedMembers(const JSONObject& object) {
  std::vector<std::pair<std::string_view, const JSONValue*>> members;
  for (const JSONMember& member : object) members.emplace_back(member.key, &member.value);
  std::sort(members.begin(), members.end());
  std::vector<JSONMember> sorted;
  sorted.reserve(members.size());
  for (const auto& [key, value] : members) sorted.push_back({key, *value});
  return sorted;
}

}  // namespace ormel::control
