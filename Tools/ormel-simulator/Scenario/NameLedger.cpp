#include "ormel-simulator/Scenario/NameLedger.h"

#include <regex>

#include "ormel-simulator/Scenario/TemplateText.h"

namespace ormel::simulator {

void NameLedger::define(Kind kind, const std::string& name, SourcePlace place) {
  // Words of the language that stand where a name could.
  const bool taken = name == "with" || name == "error" || name == "exactly" || name == "true" || name == "false";
  if (taken || !isVariableName(name))
    cursor_.failAt(place, "\"" + name + "\" has a meaning of its own and cannot be a name");
  defined_[kind].insert(name);
}

void NameLedger::use(Kind kind, const std::string& name, SourcePlace place) { uses_.push_back({kind, name, place}); }

void NameLedger::enterExampleText(std::string_view text, SourcePlace place) {
  const TemplateText read = readExampleText(text);
  switch (read.kind) {
    case TemplateText::Kind::unknown:
      cursor_.failAt(place,
                     "\"" + std::string(text) + "\" means nothing in an example; write \"$$\" for a dollar sign");
    case TemplateText::Kind::variable:
      use(Kind::variable, std::string(read.text), place);
      break;
    case TemplateText::Kind::wildcard:
      if (!read.capture.empty()) define(Kind::variable, std::string(read.capture), place);
      break;
    case TemplateText::Kind::matches:
      try {
        std::regex(std::string(read.text));
      } catch (const std::regex_error&) {
        cursor_.failAt(place, "\"" + std::string(read.text) + "\" is no regular expression");
      }
      break;
    case TemplateText::Kind::literal:
    case TemplateText::Kind::contains:
      enterText(read.text, place);
      break;
  }
}

void NameLedger::enterExample(const JSONValue& example, SourcePlace place) {
  if (const auto text = example.stringValue()) enterExampleText(*text, place);
  if (const auto* array = example.arrayValue()) {
    for (std::size_t index = 0; index < array->size(); ++index) {
      const JSONValue& element = (*array)[index];
      const bool isRest = index + 1 == array->size() && element == JSONValue("$rest");
      if (!isRest) enterExample(element, place);
    }
  }
  if (const auto* object = example.objectValue()) {
    for (const auto& [key, value] : *object) {
      if (key == "$others" && value != JSONValue("$any") && value != JSONValue("$absent")) {
        cursor_.failAt(place, R"("$others" is either "$any" or "$absent")");
      }
      enterExample(value, place);
    }
  }
}

void NameLedger::enterPayload(const JSONValue& payload, SourcePlace place) {
  if (const auto text = payload.stringValue()) {
    const TemplateText read = readPayloadText(*text);
    if (read.kind == TemplateText::Kind::variable) {
      use(Kind::variable, std::string(read.text), place);
    } else {
      enterText(read.text, place);
    }
  }
  if (const auto* array = payload.arrayValue()) {
    for (const JSONValue& element : *array) enterPayload(element, place);
  }
  if (const auto* object = payload.objectValue()) {
    for (const auto& member : *object) enterPayload(member.value, place);
  }
}

void NameLedger::enterText(std::string_view text, SourcePlace place) {
  fillIn(text, [&](std::string_view name) {
    use(Kind::variable, std::string(name), place);
    return std::string();
  });
}

void NameLedger::check() const {
  for (const Use& entry : uses_) {
    const auto names = defined_.find(entry.kind);
    if (names != defined_.end() && names->second.contains(entry.name)) continue;
    if (entry.kind == Kind::variable) {
      cursor_.failAt(entry.place, "nothing in this scenario captures \"" + entry.name + "\"");
    }
    const std::string asker = entry.kind == Kind::clientRequest ? "client" : "server";
    cursor_.failAt(entry.place, "no request of the " + asker + " is named \"" + entry.name + "\"");
  }
}

}  // namespace ormel::simulator
