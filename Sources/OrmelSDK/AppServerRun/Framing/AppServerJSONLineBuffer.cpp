#include "OrmelSDK/AppServerRun/Framing/AppServerJSONLineBuffer.h"

namespace ormel::detail {

std::vector<std::string> AppServerJSONLineBuffer::append(std::string_view bytes) {
  std::vector<std::string> lines;
  append(bytes, [&lines](std::string_view line) { lines.emplace_back(line); });
  return lines;
}

std::optional<std::string> AppServerJSONLineBuffer::finish() {
  const Emptying emptying(buffer_);
  const std::string_view tail = withoutCarriageReturn(buffer_.view());
  if (tail.empty()) return std::nullopt;
  return repairedUTF8(tail);
}

}  // namespace ormel::detail
