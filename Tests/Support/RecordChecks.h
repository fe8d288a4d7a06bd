#pragma once

// Checks that follow from a record's table alone: each field's absence, null, other spellings and wrong types, and the
// way there and back. A test gives one example object that has every field under its first key.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/CodingErrors.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::tests {

/// What the record shows of itself in a log.
template <typename Record>
std::string printed(const Record& record) {
  std::ostringstream stream;
  stream << record;
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

/// A value of a JSON type that differs from that of `value`.
inline JSONValue ofAnotherType(const JSONValue& value) {
  return value.kind() == JSONValue::Kind::bool_ ? JSONValue("text") : JSONValue(true);
}

template <typename Record>
void expectFailure(const JSONValue& object, DecodingError::Kind kind, std::string_view subjectOrKey,
                   const std::string& what) {
  try {
    (void)decode<Record>(object);
    ADD_FAILURE() << what << ": decoded " << object;
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.kind(), kind) << what << ": " << error.what();
    if (kind == DecodingError::Kind::keyNotFound) {
      EXPECT_EQ(error.subject(), subjectOrKey) << what;
    }
    if (kind == DecodingError::Kind::typeMismatch && !error.context().codingPath.empty()) {
      EXPECT_EQ(error.context().codingPath.front(), subjectOrKey) << what;
    }
  }
}

template <typename Record, typename Field>
void checkField(const JSONValue& example, const Field& field) {
  const std::string_view first = field.keys.front();
  const std::string_view last = field.keys.back();
  const std::string what(first);
  const Record whole = decode<Record>(example);
  const JSONValue* found = example.find(first);
  ASSERT_NE(found, nullptr) << "the example has no " << what;
  const JSONValue value = *found;
  const JSONValue null;
  const JSONValue without = changed(example, first);
  const JSONValue withNull = changed(example, first, first, &null);
  constexpr bool isJSON = std::is_same_v<typename coding::Unwrapped<typename Field::Value>::Type, JSONValue>;

  for (const std::string_view key : field.keys) {
    EXPECT_EQ(decode<Record>(changed(example, first, key, &value)).*Field::member, whole.*Field::member) << key;
  }
  if constexpr (Field::presence == coding::Presence::required) {
    expectFailure<Record>(without, DecodingError::Kind::keyNotFound, last, what + " absent");
    if constexpr (!isJSON) {
      if (first == last) {
        EXPECT_THROW(decode<Record>(withNull), DecodingError) << what << " null";
      } else {
        expectFailure<Record>(withNull, DecodingError::Kind::keyNotFound, last, what + " null");
      }
    }
  } else {
    EXPECT_EQ(decode<Record>(without).*Field::member, Record().*Field::member) << what << " absent";
    EXPECT_EQ(decode<Record>(withNull).*Field::member, Record().*Field::member) << what << " null";
  }
  if constexpr (!isJSON) {
    const JSONValue wrong = ofAnotherType(value);
    EXPECT_THROW(decode<Record>(changed(example, first, first, &wrong)), DecodingError) << what << " of another type";
  }
}

/// Runs all checks for a record with a JSON form of its own.
template <typename Record>
void checkRecord(std::string_view exampleText) {
  const JSONValue example = JSONValue::decode(exampleText);
  const Record record = decode<Record>(example);
  EXPECT_EQ(decode<Record>(encode(record)), record) << "there and back: " << encode(record);
  EXPECT_FALSE(record == Record()) << "the example should differ from a record without values";
  std::apply([&](const auto&... fields) { (checkField<Record>(example, fields), ...); },
             coding::RecordTable<Record>::fields);
  const JSONValue text("text");
  expectFailure<Record>(text, DecodingError::Kind::typeMismatch, "", "no object");
}

}  // namespace ormel::tests
