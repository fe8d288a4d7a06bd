#include "Texts.h"

#include "OrmelSDK/Base/Visit.h"

namespace ormel::chat {

namespace {

constexpr std::size_t longestShortText = 160;
constexpr std::string_view whiteSpace = " \t\r\n";

}  // namespace

std::string shortened(std::string_view text) {
  if (text.size() <= longestShortText) return std::string(text);
  std::size_t end = longestShortText;
  // Not within a character.
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) --end;
  return std::string(text.substr(0, end)) + "...";
}

std::string durationText(std::int64_t milliseconds) {
  if (milliseconds < 1000) return std::to_string(milliseconds) + " ms";
  return std::to_string(milliseconds / 1000) + "." + std::to_string(milliseconds % 1000 / 100) + " s";
}

std::string toolText(const std::vector<JSONValue>& content) {
  std::string text;
  for (const auto& part : content) {
    const JSONValue* partText = part.find("text");
    text += partText && partText->stringValue() ? std::string(*partText->stringValue()) : shortened(part.encode());
    text += '\n';
  }
  return text;
}

std::string toolText(const std::vector<DynamicToolCallOutputContentItem>& content) {
  std::string text;
  for (const auto& part : content) {
    text += visit(
        part, [](const DynamicToolCallOutputText& output) { return output.text; },
        [](const DynamicToolCallOutputImage& image) { return shortened(image.imageURL); });
    text += '\n';
  }
  return text;
}

std::string textViewMember(const JSONValue& object, std::string_view key, std::string_view fallback) {
  const JSONValue* value = object.find(key);
  return std::string(value ? value->stringValue().value_or(fallback) : fallback);
}

std::string_view trimmed(std::string_view text) {
  const auto begin = text.find_first_not_of(whiteSpace);
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(whiteSpace) - begin + 1);
}

std::string shellWord(std::string_view text) {
  constexpr std::string_view safe = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_./:-";
  if (!text.empty() && text.front() != '-' && text.find_first_not_of(safe) == text.npos) return std::string(text);
  std::string word = "'";
  for (const char byte : text) word += byte == '\'' ? std::string("'\\''") : std::string(1, byte);
  return word + "'";
}

}  // namespace ormel::chat
