#pragma once

#include <string>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::simulator {

/// A plausible value of a JSON schema: it has the required properties, and the optional ones near the top. A reference
/// is followed inside of the schema. Constraints that the example cannot be made from, such as a pattern, are
/// disregarded.
JSONValue schemaExample(const JSONValue& schema, const std::string& text);

/// An example of the schema, or where that is null an object of our own; `prompt` is what it answers.
JSONValue jsonAnswer(const JSONValue& schema, const std::string& prompt);

}  // namespace ormel::simulator
