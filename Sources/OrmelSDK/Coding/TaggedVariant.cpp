#include "OrmelSDK/Coding/TaggedVariant.h"

namespace ormel::coding {

std::string_view decodeType(const JSONValue& value, std::string_view variantName, const CodingPath& path) {
  const auto* object = value.objectValue();
  if (!object) failUnexpected(variantName, value, path);
  const auto* type = object->find("type");
  if (!type) failMissingKey("type", path);
  const auto word = type->stringValue();
  if (!word) failUnexpected("String", *type, path.at("type"));
  return *word;
}

}  // namespace ormel::coding
