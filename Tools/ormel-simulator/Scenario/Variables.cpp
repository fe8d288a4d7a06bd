#include "ormel-simulator/Scenario/Variables.h"

#include <vector>

#include "ormel-simulator/Scenario/TemplateText.h"

namespace ormel::simulator {

const JSONValue& Variables::get(std::string_view name) const {
  const auto found = values_.find(name);
  if (found == values_.end()) throw UnsetVariable(name);
  return found->second;
}

std::string Variables::filledInText(std::string_view text) const {
  return fillIn(text, [this](std::string_view name) {
    const JSONValue& value = get(name);
    const auto string = value.stringValue();
    return string ? std::string(*string) : value.encode();
  });
}

JSONValue Variables::filledInString(std::string_view text) const {
  const TemplateText read = readPayloadText(text);
  if (read.kind == TemplateText::Kind::variable) return get(read.text);
  return filledInText(read.text);
}

JSONValue Variables::filledIn(const JSONValue& payload) const {
  if (const auto text = payload.stringValue()) return filledInString(*text);
  if (const auto* array = payload.arrayValue()) {
    std::vector<JSONValue> elements;
    for (const JSONValue& element : *array) elements.push_back(filledIn(element));
    return JSONValue::array(elements);
  }
  if (const auto* object = payload.objectValue()) {
    JSONObjectBuilder members;
    for (const auto& [key, value] : *object) members.set(key, filledIn(value));
    return members.build();
  }
  return payload;
}

}  // namespace ormel::simulator
