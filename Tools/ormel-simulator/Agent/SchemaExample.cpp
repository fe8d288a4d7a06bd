#include "ormel-simulator/Agent/SchemaExample.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>
#include <vector>

#include "ormel-simulator/Agent/InputText.h"
#include "ormel-simulator/Requests/JSONMembers.h"

namespace ormel::simulator {

namespace {

// Deeper down, only what is required is made, so that a schema that refers to itself comes to an end; at the last
// depth nothing is.
constexpr int depthOfOptionalParts = 4;
constexpr int lastDepth = 32;

class ExampleMaker {
 public:
  ExampleMaker(const JSONValue& schema, const std::string& text) : root_(schema), text_(text) {}

  JSONValue make(const JSONValue& schema, const std::string& name, int depth) const;

 private:
  JSONValue makeObject(const JSONValue& schema, int depth) const;
  JSONValue makeArray(const JSONValue& schema, const std::string& name, int depth) const;
  JSONValue makeNumber(const JSONValue& schema, bool whole) const;
  JSONValue makeText(const JSONValue& schema, const std::string& name) const;
  JSONValue referenced(const std::string& reference) const;

  const JSONValue& root_;
  const std::string& text_;
};

std::string typeOf(const JSONValue& schema) {
  const JSONValue type = anyMember(schema, "type");
  if (const auto* types = type.arrayValue()) {
    for (const JSONValue& one : *types) {
      if (one != JSONValue("null")) return std::string(one.stringValue().value_or(""));
    }
    return "null";
  }
  if (const auto text = type.stringValue()) return std::string(*text);
  if (schema.find("properties") || schema.find("required")) return "object";
  return schema.find("items") ? "array" : "string";
}

std::vector<std::string> textsOf(const JSONValue& array) {
  std::vector<std::string> texts;
  if (const auto* elements = array.arrayValue()) {
    for (const JSONValue& element : *elements) {
      if (const auto text = element.stringValue()) texts.emplace_back(*text);
    }
  }
  return texts;
}

JSONValue ExampleMaker::make(const JSONValue& schema, const std::string& name, int depth) const {
  if (depth > lastDepth) return {};
  if (const JSONValue* constant = schema.find("const")) return *constant;
  for (const char* list : {"enum", "examples"}) {
    const JSONValue* values = schema.find(list);
    const auto* elements = values ? values->arrayValue() : nullptr;
    if (elements && !elements->empty()) return elements->front();
  }
  if (const JSONValue* value = schema.find("default")) return *value;
  if (const auto reference = textMember(schema, "$ref")) return make(referenced(*reference), name, depth + 1);
  for (const char* list : {"anyOf", "oneOf", "allOf"}) {
    const JSONValue* schemas = schema.find(list);
    const auto* elements = schemas ? schemas->arrayValue() : nullptr;
    if (elements && !elements->empty()) return make(elements->front(), name, depth + 1);
  }
  const std::string type = typeOf(schema);
  if (type == "object") return makeObject(schema, depth);
  if (type == "array") return makeArray(schema, name, depth);
  if (type == "integer" || type == "number") return makeNumber(schema, type == "integer");
  if (type == "boolean") return true;
  if (type == "null") return {};
  return makeText(schema, name);
}

JSONValue ExampleMaker::makeObject(const JSONValue& schema, int depth) const {
  const std::vector<std::string> required = textsOf(anyMember(schema, "required"));
  const JSONValue properties = anyMember(schema, "properties");
  JSONObjectBuilder members;
  for (const std::string& name : required) members.set(name, make(anyMember(properties, name), name, depth + 1));
  const auto* known = properties.objectValue();
  if (!known || depth >= depthOfOptionalParts) return members.build();
  for (const auto& property : *known) {
    const std::string name(property.key);
    if (std::find(required.begin(), required.end(), name) != required.end()) continue;
    members.set(name, make(property.value, name, depth + 1));
  }
  return members.build();
}

JSONValue ExampleMaker::makeArray(const JSONValue& schema, const std::string& name, int depth) const {
  constexpr double mostElements = 100;
  const double fewest = depth < depthOfOptionalParts ? 1 : 0;
  const double count = std::clamp(numberMember(schema, "minItems"), fewest, mostElements);
  const JSONValue* longest = schema.find("maxItems");
  std::vector<JSONValue> elements;
  if (longest && longest->numberValue() == 0.0) return JSONValue::array(elements);
  const JSONValue element = make(anyMember(schema, "items"), name, depth + 1);
  elements.assign(static_cast<std::size_t>(count), element);
  return JSONValue::array(elements);
}

JSONValue ExampleMaker::makeNumber(const JSONValue& schema, bool whole) const {
  double value = whole ? 3 : 0.5;
  const double step = whole ? 1 : 0.5;
  const auto limit = [&](const char* key) {
    const JSONValue* member = schema.find(key);
    return member ? member->numberValue() : std::nullopt;
  };
  if (const auto most = limit("maximum")) value = std::min(value, *most);
  if (const auto most = limit("exclusiveMaximum")) value = std::min(value, *most - step);
  if (const auto least = limit("minimum")) value = std::max(value, *least);
  if (const auto least = limit("exclusiveMinimum")) value = std::max(value, *least + step);
  return whole ? std::ceil(value) : value;
}

JSONValue ExampleMaker::makeText(const JSONValue& schema, const std::string& name) const {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 6> formats = {
      {{"date", "2026-01-31"},
       {"date-time", "2026-01-31T12:00:00Z"},
       {"time", "12:00:00Z"},
       {"email", "someone@example.com"},
       {"uri", "https://example.com/"},
       {"uuid", "123e4567-e89b-42d3-a456-426614174000"}}};
  const std::string format = textMember(schema, "format").value_or("");
  for (const auto& [known, example] : formats) {
    if (format == known) return example;
  }
  std::string text = name.empty() ? text_ : name + " for: " + text_;
  const std::size_t least = static_cast<std::size_t>(std::clamp(numberMember(schema, "minLength"), 0.0, 10'000.0));
  if (text.size() < least) text.append(least - text.size(), '.');
  const JSONValue* most = schema.find("maxLength");
  const auto length = most ? most->numberValue() : std::nullopt;
  // An ASCII text, of which any part is a text, where one has to be cut.
  if (length && static_cast<double>(text.size()) > *length) {
    text = std::string("an example, as long as may be").substr(0, static_cast<std::size_t>(std::max(*length, 0.0)));
    if (text.size() < least) text.append(least - text.size(), '.');
  }
  return text;
}

JSONValue ExampleMaker::referenced(const std::string& reference) const {
  if (!reference.starts_with("#")) return {};
  const JSONValue* place = &root_;
  for (std::size_t start = 1; place && start < reference.size();) {
    const std::size_t end = std::min(reference.find('/', start + 1), reference.size());
    place = place->find(std::string_view(reference).substr(start + 1, end - start - 1));
    start = end;
  }
  return place ? *place : JSONValue();
}

}  // namespace

JSONValue schemaExample(const JSONValue& schema, const std::string& text) {
  return ExampleMaker(schema, text).make(schema, "", 0);
}

JSONValue jsonAnswer(const JSONValue& schema, const std::string& prompt) {
  if (!schema.isNull()) return schemaExample(schema, prompt);
  return JSONValue::object(
      {{"answer", "An answer to: " + prompt}, {"confident", true}, {"words", wordPieces(prompt).size()}});
}

}  // namespace ormel::simulator
