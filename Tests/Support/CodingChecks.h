#pragma once

// Reading and writing of records and words by their JSON texts.

#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/CodingErrors.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::tests {

template <typename Type>
Type decoded(std::string_view text) {
  return decode<Type>(JSONValue::decode(text));
}

/// The error's text, or "decoded" if there was none.
template <typename Type>
std::string failureOf(std::string_view text) {
  try {
    (void)decoded<Type>(text);
  } catch (const DecodingError& error) {
    return error.what();
  }
  return "decoded";
}

/// The error that reading `object` gives, or nothing.
template <typename Record>
std::optional<DecodingError> errorIn(const JSONValue& object) {
  try {
    (void)decode<Record>(object);
    return std::nullopt;
  } catch (const DecodingError& error) {
    return error;
  }
}

/// Exactly the members of `text` are written.
template <typename Type>
void expectWritten(const Type& value, std::string_view text) {
  EXPECT_EQ(encode(value), JSONValue::decode(text));
}

/// Each case is read from its word and written as it.
template <typename Enumeration>
void checkWords(std::initializer_list<std::pair<Enumeration, std::string_view>> words) {
  for (const auto& [value, word] : words) {
    EXPECT_EQ(rawValue(value), word);
    EXPECT_EQ(encode(value), JSONValue(word));
    EXPECT_EQ(decode<Enumeration>(JSONValue(word)), value) << word;
  }
  EXPECT_THROW(decode<Enumeration>(JSONValue(1)), DecodingError);
  EXPECT_THROW(decode<Enumeration>(JSONValue()), DecodingError);
}

/// Each text, none of them a word in its exact spelling, is read as the case beside it.
template <typename Enumeration>
void checkTolerance(std::initializer_list<std::pair<std::string_view, Enumeration>> texts) {
  for (const auto& [text, value] : texts) {
    EXPECT_EQ(decode<Enumeration>(JSONValue(text)), value) << text;
    EXPECT_NE(rawValue(value), text);
  }
}

/// No other spelling of a word is read.
template <typename Enumeration>
void checkStrictness(std::string_view typeName, std::initializer_list<std::string_view> texts) {
  for (const auto text : texts) {
    EXPECT_EQ(failureOf<Enumeration>(JSONValue(text).encode()),
              "Cannot initialize " + std::string(typeName) + " from invalid String value " + std::string(text));
  }
}

/// Each constant of an open vocabulary is its word, and any other text survives.
template <typename Vocabulary>
void checkVocabulary(std::initializer_list<std::pair<Vocabulary, std::string_view>> words) {
  for (const auto& [constant, word] : words) {
    EXPECT_EQ(constant.rawValue, word);
    EXPECT_EQ(encode(constant), JSONValue(word));
    EXPECT_EQ(decode<Vocabulary>(JSONValue(word)), constant);
  }
  for (const char* other : {"futureWord", "", " Some_Thing "}) {
    EXPECT_EQ(encode(decode<Vocabulary>(JSONValue(other))), JSONValue(other));
  }
  EXPECT_THROW(decode<Vocabulary>(JSONValue(1)), DecodingError);
}

/// The text of a value in a log.
template <typename Type>
std::string printed(const Type& value) {
  std::ostringstream stream;
  stream << value;
  return stream.str();
}

/// `object` with `key` taken out, and, if `value` is given, put in with that value.
inline JSONValue changed(const JSONValue& object, std::string_view without, std::string_view key = {},
                         const JSONValue* value = nullptr) {
  std::vector<JSONMemberInit> members;
  for (const auto& [name, member] : *object.objectValue()) {
    if (name != without && name != key) members.emplace_back(name, member);
  }
  if (value) members.emplace_back(key, *value);
  return JSONValue::object(members);
}

}  // namespace ormel::tests
