#pragma once

// Checks that follow from a record's table alone: each field's absence, null, other spellings and wrong types, and the
// way there and back. A test gives one example object that has every field under its first key.

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Coding/RecordDescription.h"
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

/// What a record holds in one field, as it is written; absent if the field is empty.
inline std::optional<JSONValue> valueOf(const coding::Field& field, const void* record) {
  if (field.presence == coding::Presence::optional && field.isEmptyIn(record)) return std::nullopt;
  return field.encodedFrom(record);
}

/// An error that `object` gives for the value under `key`, or nothing.
template <typename Record>
std::optional<DecodingError> errorIn(const JSONValue& object) {
  try {
    (void)decode<Record>(object);
    return std::nullopt;
  } catch (const DecodingError& error) {
    return error;
  }
}

template <typename Record>
void checkField(const JSONValue& example, const coding::Field& field) {
  const std::string_view first = field.keys[0];
  const std::string_view last = field.keys[field.keyCount - 1u];
  const std::string what(first);
  const Record whole = decode<Record>(example);
  const Record initial;
  const JSONValue* found = example.find(first);
  ASSERT_NE(found, nullptr) << "the example has no " << what;
  const JSONValue value = *found;
  const JSONValue null;
  const JSONValue wrong = ofAnotherType(value);
  const JSONValue without = changed(example, first);
  const JSONValue withNull = changed(example, first, first, &null);
  const JSONValue withWrong = changed(example, first, first, &wrong);
  // A field of type `JSONValue` takes any value.
  const bool takesAnyValue = !errorIn<Record>(withWrong);

  for (std::size_t at = 0; at < field.keyCount; ++at) {
    const std::string_view key = field.keys[at];
    EXPECT_EQ(decode<Record>(changed(example, first, key, &value)), whole) << key;
    if (takesAnyValue) continue;
    const auto error = errorIn<Record>(changed(example, first, key, &wrong));
    ASSERT_TRUE(error) << key << " of another type";
    ASSERT_FALSE(error->context().codingPath.empty()) << key;
    EXPECT_EQ(error->context().codingPath.front(), key) << "the path to a value of another type";
  }
  if (field.presence == coding::Presence::required) {
    expectFailure<Record>(without, DecodingError::Kind::keyNotFound, last, what + " absent");
    if (takesAnyValue) return;
    if (first == last) {
      EXPECT_THROW(decode<Record>(withNull), DecodingError) << what << " null";
    } else {
      expectFailure<Record>(withNull, DecodingError::Kind::keyNotFound, last, what + " null");
    }
  } else {
    for (const JSONValue& absent : {without, withNull}) {
      const Record record = decode<Record>(absent);
      EXPECT_EQ(valueOf(field, &record), valueOf(field, &initial)) << what << " absent or null";
    }
  }
}

/// Runs all checks for a record with a JSON form of its own.
template <typename Record>
void checkRecord(std::string_view exampleText) {
  const JSONValue example = JSONValue::decode(exampleText);
  const Record record = decode<Record>(example);
  EXPECT_EQ(decode<Record>(encode(record)), record) << "there and back: " << encode(record);
  EXPECT_FALSE(record == Record()) << "the example should differ from a record without values";
  for (const coding::Field& field : descriptionOf(coding::Coded<Record>()).fields) checkField<Record>(example, field);
  const JSONValue text("text");
  expectFailure<Record>(text, DecodingError::Kind::typeMismatch, "", "no object");
}

}  // namespace ormel::tests
