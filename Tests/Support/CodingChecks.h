#pragma once

// Reading and writing of records and words by their JSON texts.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>
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

/// Exactly the members of `text` are written.
template <typename Type>
void expectWritten(const Type& value, std::string_view text) {
  EXPECT_EQ(encode(value), JSONValue::decode(text));
}

/// What a value shows of itself in a log.
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
