#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "OrmelSDK/Coding/CodingFailure.h"
#include "OrmelSDK/Coding/CodingPath.h"
#include "OrmelSDK/JSONValue.h"
#include "OrmelSDK/OpenVocabulary.h"

namespace ormel::coding {

/// How a type is read from and written to JSON: `decode` fails with `DecodingError`, `encode` with `EncodingError`.
///
/// The primary template stands for records, variants and enumerations. Its members are declared beside the type's
/// table by `ORMEL_DECLARE_CODEC` and defined once, in the `.cpp` of its family, by an `ORMEL_DEFINE_...` macro.
template <typename T>
struct Codec {
  static T decode(const JSONValue& value, const CodingPath& path);
  static JSONValue encode(const T& value);
};

/// At global scope.
#define ORMEL_DECLARE_CODEC(Type)                                                                        \
  template <>                                                                                            \
  ormel::Type ormel::coding::Codec<ormel::Type>::decode(const JSONValue& value, const CodingPath& path); \
  template <>                                                                                            \
  ormel::JSONValue ormel::coding::Codec<ormel::Type>::encode(const ormel::Type& value);

/// For a type that is printed in the form of a record but has no JSON form. At global scope.
#define ORMEL_DECLARE_PRINTED(Type) \
  template <>                       \
  ormel::JSONValue ormel::coding::Codec<ormel::Type>::encode(const ormel::Type& value);

/// A word of a list that may grow: a bare string on the wire.
template <std::derived_from<OpenVocabulary> Word>
struct Codec<Word> {
  static Word decode(const JSONValue& value, const CodingPath& path) {
    const auto text = value.stringValue();
    if (!text) failUnexpected("String", value, path);
    return Word(*text);
  }
  static JSONValue encode(const Word& value) { return value.rawValue; }
};

template <>
struct Codec<JSONValue> {
  static JSONValue decode(const JSONValue& value, const CodingPath&) { return value; }
  static JSONValue encode(const JSONValue& value) { return value; }
};

template <>
struct Codec<std::string> {
  static std::string decode(const JSONValue& value, const CodingPath& path) {
    const auto text = value.stringValue();
    if (!text) failUnexpected("String", value, path);
    return std::string(*text);
  }
  static JSONValue encode(const std::string& value) { return value; }
};

template <>
struct Codec<bool> {
  static bool decode(const JSONValue& value, const CodingPath& path) {
    const auto boolean = value.boolValue();
    if (!boolean) failUnexpected("Bool", value, path);
    return *boolean;
  }
  static JSONValue encode(bool value) { return value; }
};

template <>
struct Codec<double> {
  static double decode(const JSONValue& value, const CodingPath& path) {
    const auto number = value.numberValue();
    if (!number) failUnexpected("Double", value, path);
    return *number;
  }
  static JSONValue encode(double value) { return value; }
};

/// Integers are checked: a fraction or a number that does not fit is a corrupted value, never cut to size.
template <>
struct Codec<std::int64_t> {
  static std::int64_t decode(const JSONValue& value, const CodingPath& path) {
    const auto number = value.numberValue();
    if (!number) failUnexpected("Int", value, path);
    const bool fits = *number >= -0x1p63 && *number < 0x1p63;
    if (!fits || static_cast<double>(static_cast<std::int64_t>(*number)) != *number) {
      failCorrupted("The number " + value.encode() + " does not fit in Int.", path);
    }
    return static_cast<std::int64_t>(*number);
  }
  static JSONValue encode(std::int64_t value) { return value; }
};

template <typename Element>
struct Codec<std::vector<Element>> {
  static std::vector<Element> decode(const JSONValue& value, const CodingPath& path) {
    const auto* array = value.arrayValue();
    if (!array) failUnexpected("Array", value, path);
    std::vector<Element> elements;
    elements.reserve(array->size());
    std::size_t index = 0;
    for (const auto& element : *array) elements.push_back(Codec<Element>::decode(element, path.at(index++)));
    return elements;
  }
  static JSONValue encode(const std::vector<Element>& value) {
    std::vector<JSONValue> elements;
    elements.reserve(value.size());
    for (const auto& element : value) elements.push_back(Codec<Element>::encode(element));
    return JSONValue::array(elements);
  }
};

template <typename Value>
struct Codec<std::map<std::string, Value>> {
  static std::map<std::string, Value> decode(const JSONValue& value, const CodingPath& path) {
    const auto* object = value.objectValue();
    if (!object) failUnexpected("Dictionary", value, path);
    std::map<std::string, Value> entries;
    for (const auto& [key, entry] : *object) entries.emplace(key, Codec<Value>::decode(entry, path.at(key)));
    return entries;
  }
  static JSONValue encode(const std::map<std::string, Value>& value) {
    std::vector<JSONMemberInit> members;
    members.reserve(value.size());
    for (const auto& [key, entry] : value) members.emplace_back(key, Codec<Value>::encode(entry));
    return JSONValue::object(members);
  }
};

}  // namespace ormel::coding
