#include "OrmelSDK/Coding/CodingFailure.h"

#include <utility>

#include "OrmelSDK/JSON/CodingErrors.h"

namespace ormel::coding {

namespace {

DecodingContext context(std::string description, const CodingPath& path) {
  DecodingContext context(std::move(description));
  context.codingPath = path.texts();
  return context;
}

std::string_view nameOf(JSONValue::Kind kind) {
  switch (kind) {
    case JSONValue::Kind::string:
      return "a string";
    case JSONValue::Kind::number:
      return "a number";
    case JSONValue::Kind::bool_:
      return "a boolean";
    case JSONValue::Kind::object:
      return "an object";
    case JSONValue::Kind::array:
      return "an array";
    case JSONValue::Kind::null:
      return "null";
  }
  return "nothing";
}

}  // namespace

void failTypeMismatch(std::string_view wantedType, const JSONValue& found, const CodingPath& path) {
  auto description = "Expected " + std::string(wantedType) + " but found " + std::string(nameOf(found.kind())) + ".";
  throw DecodingError::typeMismatch(std::string(wantedType), context(std::move(description), path));
}

void failNullValue(std::string_view wantedType, const CodingPath& path) {
  auto description = "Expected " + std::string(wantedType) + " but found null.";
  throw DecodingError::valueNotFound(std::string(wantedType), context(std::move(description), path));
}

void failMissingKey(std::string_view key, const CodingPath& path) {
  auto description = "No value is associated with the key '" + std::string(key) + "'.";
  throw DecodingError::keyNotFound(std::string(key), context(std::move(description), path));
}

void failCorrupted(std::string description, const CodingPath& path) {
  throw DecodingError::dataCorrupted(context(std::move(description), path));
}

void failUnexpected(std::string_view wantedType, const JSONValue& found, const CodingPath& path) {
  if (found.isNull()) failNullValue(wantedType, path);
  failTypeMismatch(wantedType, found, path);
}

}  // namespace ormel::coding
