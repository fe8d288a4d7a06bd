#include "ormel-simulator/Agent/InputText.h"

#include <algorithm>

#include "ormel-simulator/Requests/JSONMembers.h"

namespace ormel::simulator {

namespace {

constexpr std::string_view whiteSpace = " \t\r\n";

std::string partText(const JSONValue& part) {
  const std::string type = textMember(part, "type").value_or("");
  if (type == "text") return textMember(part, "text").value_or("");
  if (type == "image" || type == "localImage") return "(an image)";
  return "(the " + type + " " + textMember(part, "name").value_or("") + ")";
}

}  // namespace

std::string inputText(const JSONValue& input) {
  std::string text;
  const auto* parts = input.arrayValue();
  if (!parts) return text;
  for (const JSONValue& part : *parts) {
    if (!text.empty()) text += ' ';
    text += partText(part);
  }
  return text;
}

std::string trimmed(std::string_view text) {
  const std::size_t start = text.find_first_not_of(whiteSpace);
  if (start == std::string_view::npos) return {};
  return std::string(text.substr(start, text.find_last_not_of(whiteSpace) + 1 - start));
}

std::vector<std::string> wordPieces(std::string_view text) {
  std::vector<std::string> pieces;
  while (!text.empty()) {
    const std::size_t word = std::min(text.find_first_not_of(whiteSpace), text.size());
    const std::size_t end = std::min(text.find_first_of(whiteSpace, word), text.size());
    pieces.emplace_back(text.substr(0, end));
    text.remove_prefix(end);
  }
  return pieces;
}

}  // namespace ormel::simulator
