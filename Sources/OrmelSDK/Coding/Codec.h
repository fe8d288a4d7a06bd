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
#include "OrmelSDK/Coding/KeptValue.h"
#include "OrmelSDK/Coding/OpenVocabulary.h"
#include "OrmelSDK/JSON/JSONStorage.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::coding {

struct EnumerationWords;
struct RecordDescription;

// g++ asks whether friends that are no templates are meant. They are: such a function is an ordinary one that is
// compiled in one file and may be called from any.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-template-friend"
#endif

/// Declares, for each type that is asked for, the functions that the `.cpp` of its family defines by an
/// `ORMEL_DEFINE_...` line. So a family reads and writes the types of another one without seeing their tables.
template <typename T>
struct Coded {
  friend void decodeCoded(Coded type, T& into, const JSONValue& value, const CodingPath& path);
  friend JSONValue encodeCoded(Coded type, const T& value);
  /// Defined for records.
  friend const RecordDescription& descriptionOf(Coded type);
  /// Defined for enumerations.
  friend const EnumerationWords& wordsOf(Coded type);
};

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

/// How a type is read from and written to JSON: `decodeInto` fails with `DecodingError`, `encode` with `EncodingError`.
///
/// `decodeInto` reads into a value that has just been made, in the place where it will stay; one that failed to be read
/// holds anything.
///
/// The primary template stands for records, variants and enumerations, which are compiled in the `.cpp` of their
/// family.
template <typename T>
struct Codec {
  static void decodeInto(T& into, const JSONValue& value, const CodingPath& path) {
    decodeCoded(Coded<T>(), into, value, path);
  }
  static JSONValue encode(const T& value) { return encodeCoded(Coded<T>(), value); }
};

template <typename T>
T decodeAs(const JSONValue& value, const CodingPath& path) {
  T decoded;
  Codec<T>::decodeInto(decoded, value, path);
  return decoded;
}

/// The text of a string, or the failure that it is none.
inline std::string_view textOf(const JSONValue& value, const CodingPath& path) {
  if (value.kind() != JSONValue::Kind::string) [[unlikely]]
    failUnexpected("String", value, path);
  return detail::storedText(detail::JSONAccess::data(value));
}

/// A word of a list that may grow: a bare string on the wire.
template <std::derived_from<OpenVocabulary> Word>
struct Codec<Word> {
  static void decodeInto(Word& into, const JSONValue& value, const CodingPath& path) {
    into.rawValue = textOf(value, path);
  }
  static JSONValue encode(const Word& value) { return value.rawValue; }
};

template <>
struct Codec<JSONValue> {
  static void decodeInto(JSONValue& into, const JSONValue& value, const CodingPath&) { into = kept(value); }
  static JSONValue encode(const JSONValue& value) { return value; }
};

template <>
struct Codec<std::string> {
  static void decodeInto(std::string& into, const JSONValue& value, const CodingPath& path) {
    into = textOf(value, path);
  }
  static JSONValue encode(const std::string& value) { return value; }
};

template <>
struct Codec<bool> {
  static void decodeInto(bool& into, const JSONValue& value, const CodingPath& path) {
    const auto boolean = value.boolValue();
    if (!boolean) [[unlikely]]
      failUnexpected("Bool", value, path);
    into = *boolean;
  }
  static JSONValue encode(bool value) { return value; }
};

template <>
struct Codec<double> {
  static void decodeInto(double& into, const JSONValue& value, const CodingPath& path) {
    const auto number = value.numberValue();
    if (!number) [[unlikely]]
      failUnexpected("Double", value, path);
    into = *number;
  }
  static JSONValue encode(double value) { return value; }
};

/// Integers are checked: a fraction or a number that does not fit is a corrupted value, never cut to size.
template <>
struct Codec<std::int64_t> {
  static void decodeInto(std::int64_t& into, const JSONValue& value, const CodingPath& path) {
    const auto number = value.numberValue();
    if (!number) [[unlikely]]
      failUnexpected("Int", value, path);
    const bool fits = *number >= -0x1p63 && *number < 0x1p63;
    if (!fits || static_cast<double>(static_cast<std::int64_t>(*number)) != *number) [[unlikely]]
      failCorrupted("The number " + value.encode() + " does not fit in Int.", path);
    into = static_cast<std::int64_t>(*number);
  }
  static JSONValue encode(std::int64_t value) { return value; }
};

/// Values that are kept together are copied out together.
template <>
struct Codec<std::vector<JSONValue>> {
  static void decodeInto(std::vector<JSONValue>& into, const JSONValue& value, const CodingPath& path) {
    if (value.kind() != JSONValue::Kind::array) [[unlikely]]
      failUnexpected("Array", value, path);
    const JSONValue list = kept(value);
    into.assign(list.arrayValue()->begin(), list.arrayValue()->end());
  }
  static JSONValue encode(const std::vector<JSONValue>& value) { return JSONValue::array(value); }
};

template <typename Element>
struct Codec<std::vector<Element>> {
  static void decodeInto(std::vector<Element>& into, const JSONValue& value, const CodingPath& path) {
    const auto* array = value.arrayValue();
    if (!array) [[unlikely]]
      failUnexpected("Array", value, path);
    into.clear();
    into.resize(array->size());
    std::size_t index = 0;
    for (Element& element : into) {
      Codec<Element>::decodeInto(element, (*array)[index], path.at(index));
      ++index;
    }
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
  static void decodeInto(std::map<std::string, Value>& into, const JSONValue& value, const CodingPath& path) {
    const auto* object = value.objectValue();
    if (!object) [[unlikely]]
      failUnexpected("Dictionary", value, path);
    into.clear();
    for (const auto& [key, entry] : *object) {
      Codec<Value>::decodeInto(into.try_emplace(std::string(key)).first->second, entry, path.at(key));
    }
  }
  static JSONValue encode(const std::map<std::string, Value>& value) {
    std::vector<JSONMemberInit> members;
    members.reserve(value.size());
    for (const auto& [key, entry] : value) members.emplace_back(key, Codec<Value>::encode(entry));
    return JSONValue::object(members);
  }
};

}  // namespace ormel::coding
