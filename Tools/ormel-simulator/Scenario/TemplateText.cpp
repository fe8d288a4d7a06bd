#include "ormel-simulator/Scenario/TemplateText.h"

#include <algorithm>
#include <array>

namespace ormel::simulator {

namespace {

constexpr std::array<std::string_view, 11> wildcards = {"any",  "capture", "string", "number", "integer", "bool",
                                                        "null", "object",  "array",  "absent", "maybe"};

bool isWildcard(std::string_view word) {
  return std::find(wildcards.begin(), wildcards.end(), word) != wildcards.end();
}

bool isName(std::string_view text) {
  const auto startsName = [](char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_';
  };
  return !text.empty() && startsName(text[0]) && std::all_of(text.begin(), text.end(), [&](char byte) {
    return startsName(byte) || (byte >= '0' && byte <= '9');
  });
}

TemplateText made(TemplateText::Kind kind, std::string_view text, std::string_view capture = {}) {
  TemplateText result;
  result.kind = kind;
  result.text = text;
  result.capture = capture;
  return result;
}

bool canCapture(std::string_view wildcard) { return wildcard != "absent" && wildcard != "maybe"; }

}  // namespace

bool isVariableName(std::string_view name) {
  return isName(name) && !isWildcard(name) && name != "others" && name != "rest";
}

TemplateText readPayloadText(std::string_view text) {
  using Kind = TemplateText::Kind;
  if (text.starts_with("$$")) return made(Kind::literal, text.substr(1));
  if (text.starts_with('$') && isVariableName(text.substr(1))) return made(Kind::variable, text.substr(1));
  return made(Kind::literal, text);
}

TemplateText readExampleText(std::string_view text) {
  using Kind = TemplateText::Kind;
  const TemplateText plain = readPayloadText(text);
  const bool special = text.starts_with('$') && !text.starts_with("$$") && !text.starts_with("${");
  if (plain.kind == Kind::variable || !special) return plain;

  const std::string_view words = text.substr(1);
  const std::size_t colon = words.find(':');
  const std::string_view word = words.substr(0, colon);
  if (colon == std::string_view::npos) {
    return isWildcard(word) && word != "capture" ? made(Kind::wildcard, word) : made(Kind::unknown, text);
  }
  const std::string_view operand = words.substr(colon + 1);
  if (word == "contains") return made(Kind::contains, operand);
  if (word == "matches") return made(Kind::matches, operand);
  if (!isWildcard(word) || !canCapture(word) || !isVariableName(operand)) return made(Kind::unknown, text);
  return made(Kind::wildcard, word == "capture" ? "any" : word, operand);
}

std::string fillIn(std::string_view literal, const std::function<std::string(std::string_view)>& onName) {
  std::string filled;
  while (true) {
    const std::size_t start = literal.find("${");
    const std::size_t end = start == std::string_view::npos ? start : literal.find('}', start);
    if (end == std::string_view::npos) return filled.append(literal);
    const std::string_view name = literal.substr(start + 2, end - start - 2);
    if (isVariableName(name)) {
      filled.append(literal.substr(0, start)).append(onName(name));
    } else {
      filled.append(literal.substr(0, end + 1));
    }
    literal.remove_prefix(end + 1);
  }
}

}  // namespace ormel::simulator
