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

bool hasType(const JSONValue& value) {
  if (value.kind() != JSONValue::Kind::object) return true;
  const JSONValue* const type = findType(detail::JSONAccess::object(value));
  return type && type->kind() == JSONValue::Kind::string;
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

void decodeVariant(const VariantDescription& description, void* variant, const JSONValue& value,
                   const CodingPath& path) {
  if (description.decodeUntyped && !hasType(value)) {
    description.decodeUntyped(variant, value, path);
    return;
  }
  const std::byte* const word = detail::JSONAccess::data(typeOf(value, description.name, path));
  const std::size_t position = description.words->find(word);
  if (position != WordIndex::none) {
    description.cases[description.casesOfWords[position]].decodeInto(variant, value, path);
  } else {
    description.decodeUnknown(variant, detail::storedText(word), value, path);
  }
}

bool encodeVariant(const VariantDescription& description, std::size_t alternative, const void* variant,
                   JSONValue& encoded) {
  for (const VariantCase& one : description.cases) {
    if (one.alternative != alternative) continue;
    std::vector<JSONMemberInit> members;
    if (one.writesType) members.emplace_back("type", one.words[0]);
    one.encodeMembers(variant, members);
    encoded = JSONValue::object(members);
    return true;
  }
  return false;
}

}  // namespace ormel::coding
