#include "ormel-simulator/Scenario/ExampleMatcher.h"

#include <regex>

#include "ormel-simulator/Scenario/Message.h"
#include "ormel-simulator/Scenario/TemplateText.h"

namespace ormel::simulator {

namespace {

using Difference = std::optional<std::string>;

bool isOfType(const JSONValue& value, std::string_view wildcard) {
  using Kind = JSONValue::Kind;
  if (wildcard == "string") return value.kind() == Kind::string;
  if (wildcard == "number") return value.kind() == Kind::number;
  if (wildcard == "bool") return value.kind() == Kind::bool_;
  if (wildcard == "object") return value.kind() == Kind::object;
  if (wildcard == "array") return value.kind() == Kind::array;
  if (wildcard == "null") return value.isNull();
  if (wildcard == "integer") return isWholeNumber(value);
  return wildcard == "any" || wildcard == "maybe";
}

std::string withArticle(std::string_view type) {
  if (type == "null") return "null";
  const bool vowel = type.starts_with('i') || type.starts_with('o') || type.starts_with('a');
  return (vowel ? "an " : "a ") + std::string(type);
}

class Matcher {
 public:
  Matcher(Variables& variables, bool exact) : variables_(variables), exact_(exact) {}

  Difference compare(const JSONValue& example, const JSONValue& actual, const std::string& path) {
    if (const auto text = example.stringValue()) return compareWithText(*text, actual, path);
    if (example.objectValue()) return compareObjects(example, actual, path);
    if (example.arrayValue()) return compareArrays(example, actual, path);
    return compareEqual(example, actual, path);
  }

 private:
  static Difference compareEqual(const JSONValue& wanted, const JSONValue& actual, const std::string& path) {
    if (wanted == actual) return std::nullopt;
    return path + " is " + actual.encode() + " instead of " + wanted.encode();
  }

  Difference compareWithText(std::string_view text, const JSONValue& actual, const std::string& path) {
    const TemplateText read = readExampleText(text);
    switch (read.kind) {
      case TemplateText::Kind::literal:
        return compareEqual(variables_.filledInText(read.text), actual, path);
      case TemplateText::Kind::variable:
        return compareEqual(variables_.get(read.text), actual, path);
      case TemplateText::Kind::contains:
        return compareContained(variables_.filledInText(read.text), actual, path);
      case TemplateText::Kind::matches:
        return compareExpression(std::string(read.text), actual, path);
      case TemplateText::Kind::wildcard:
        return compareType(read, actual, path);
      case TemplateText::Kind::unknown:
        break;
    }
    return path + " cannot be compared with " + std::string(text);
  }

  Difference compareType(const TemplateText& wildcard, const JSONValue& actual, const std::string& path) {
    if (!isOfType(actual, wildcard.text)) {
      return path + " is " + actual.encode() + " instead of " + withArticle(wildcard.text);
    }
    if (!wildcard.capture.empty()) variables_.set(wildcard.capture, actual);
    return std::nullopt;
  }

  static Difference compareContained(const std::string& part, const JSONValue& actual, const std::string& path) {
    const auto text = actual.stringValue();
    if (text && text->find(part) != std::string_view::npos) return std::nullopt;
    return path + " is " + actual.encode() + ", which does not contain " + JSONValue(part).encode();
  }

  static Difference compareExpression(const std::string& expression, const JSONValue& actual, const std::string& path) {
    const auto text = actual.stringValue();
    if (text && std::regex_match(std::string(*text), std::regex(expression))) return std::nullopt;
    return path + " is " + actual.encode() + ", which does not match " + expression;
  }

  Difference compareArrays(const JSONValue& example, const JSONValue& actual, const std::string& path) {
    const auto& wanted = *example.arrayValue();
    const auto* elements = actual.arrayValue();
    if (!elements) return path + " is " + actual.encode() + " instead of an array";
    const bool open = !wanted.empty() && wanted.back() == JSONValue("$rest");
    const std::size_t count = wanted.size() - (open ? 1 : 0);
    if (open ? elements->size() < count : elements->size() != count) {
      return path + " has " + std::to_string(elements->size()) + " elements instead of " + std::to_string(count) +
             (open ? " or more" : "");
    }
    for (std::size_t index = 0; index < count; ++index) {
      auto found = compare(wanted[index], (*elements)[index], path + "[" + std::to_string(index) + "]");
      if (found) return found;
    }
    return std::nullopt;
  }

  Difference compareObjects(const JSONValue& example, const JSONValue& actual, const std::string& path) {
    const auto& wanted = *example.objectValue();
    const auto* members = actual.objectValue();
    if (!members) return path + " is " + actual.encode() + " instead of an object";
    for (const auto& [key, value] : wanted) {
      if (key == "$others") continue;
      auto found = compareMember(value, members->find(key), path + "." + std::string(key));
      if (found) return found;
    }
    const JSONValue* others = wanted.find("$others");
    const bool closed = others ? *others == JSONValue("$absent") : exact_;
    if (!closed) return std::nullopt;
    for (const auto& [key, value] : *members) {
      if (!wanted.contains(key)) return path + "." + std::string(key) + " is there, which was not expected";
    }
    return std::nullopt;
  }

  Difference compareMember(const JSONValue& example, const JSONValue* actual, const std::string& path) {
    if (actual) {
      if (example == JSONValue("$absent")) return path + " is " + actual->encode() + " instead of absent";
      return compare(example, *actual, path);
    }
    if (example == JSONValue("$absent") || example == JSONValue("$maybe")) return std::nullopt;
    return path + " is missing";
  }

  Variables& variables_;
  bool exact_;
};

}  // namespace

std::optional<std::string> difference(const Example& example, const JSONValue& actual, const std::string& path,
                                      Variables& variables) {
  Variables captured = variables;
  auto found = Matcher(captured, example.exact).compare(example.value, actual, path);
  if (!found) variables = std::move(captured);
  return found;
}

}  // namespace ormel::simulator
