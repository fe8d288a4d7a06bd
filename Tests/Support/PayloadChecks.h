#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "OrmelSDK/Handlers/DynamicTool.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::tests {

inline JSONValue json(std::string_view text) { return JSONValue::decode(text); }

/// One object of the members of several; a later one's stands.
inline JSONValue joined(std::initializer_list<std::string_view> objects) {
  JSONObjectBuilder members;
  for (const auto text : objects) {
    const JSONValue object = json(text);
    for (const auto& [key, value] : *object.objectValue()) members.set(key, value);
  }
  return members.build();
}

/// A tool of which only the name is known.
inline DynamicTool namedTool(const std::string& name) {
  DynamicToolSpec spec;
  spec.name = name;
  return {spec, [](const DynamicToolCallContext&) { return DynamicToolResult(); }};
}

}  // namespace ormel::tests
