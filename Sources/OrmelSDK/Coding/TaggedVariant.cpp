#include "OrmelSDK/Coding/TaggedVariant.h"

namespace ormel::coding {

namespace {

// The first member's, as everyone writes it, or else wherever it stands.
const JSONValue* findType(const JSONObject& object) {
  constexpr std::string_view key = "type";
  if (!object.empty()) {
    const auto& first = *object.begin();
    if (first.key == key) return &first.value;
  }
  return object.find(key);
}

}  // namespace

const JSONValue& typeOf(const JSONValue& value, std::string_view variantName, const CodingPath& path) {
  if (value.kind() != JSONValue::Kind::object) failUnexpected(variantName, value, path);
  const JSONValue* const type = findType(detail::JSONAccess::object(value));
  if (!type) failMissingKey("type", path);
  if (type->kind() != JSONValue::Kind::string) failUnexpected("String", *type, path.at("type"));
  return *type;
}

std::string_view decodeType(const JSONValue& value, std::string_view variantName, const CodingPath& path) {
  return *typeOf(value, variantName, path).stringValue();
}

}  // namespace ormel::coding
