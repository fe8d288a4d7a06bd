#pragma once

// The definition of the codecs of records; included only by the `.cpp` of a family.

#include <cstddef>
#include <ostream>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "OrmelSDK/Coding/FieldCount.h"
#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Coding/TypeName.h"
#include "OrmelSDK/RecordCoding.h"

namespace ormel::coding {

/// Whether an object has something other than null under a key.
inline bool hasValue(const JSONObject& object, std::string_view key) {
  const JSONValue* value = object.find(key);
  return value && !value->isNull();
}

/// The value under the first of a field's keys that has one other than null, and that key; else null and the last.
struct FoundValue {
  const JSONValue* value = nullptr;
  std::string_view key;
};

template <typename Field>
FoundValue findValue(const JSONObject& object, const Field& field) {
  FoundValue found;
  for (const std::string_view key : field.keys) {
    found.key = key;
    found.value = object.find(key);
    if (found.value && !found.value->isNull()) return found;
  }
  return found;
}

template <typename Record, typename Field>
void decodeField(Record& record, const JSONObject& object, const Field& field, const CodingPath& path) {
  const FoundValue found = findValue(object, field);
  if constexpr (Field::presence == Presence::required) {
    if (!found.value) failMissingKey(found.key, path);
  } else {
    if (!found.value || found.value->isNull()) return;
  }
  record.*Field::member = Field::ValueCoder::decode(*found.value, path.at(found.key));
}

template <typename Value>
bool isEmpty(const Value& value) {
  if constexpr (requires { value.empty(); }) {
    return value.empty();
  } else {
    return false;
  }
}

template <typename Record, typename Field>
void encodeField(const Record& record, const Field& field, std::vector<JSONMemberInit>& members) {
  const auto& value = record.*Field::member;
  if constexpr (Field::presence == Presence::optional) {
    if (value) members.emplace_back(field.writtenKey, Field::ValueCoder::encode(*value));
  } else {
    if (field.omitEmpty && isEmpty(value)) return;
    members.emplace_back(field.writtenKey, Field::ValueCoder::encode(value));
  }
}

/// Reads a record by a table of its fields; `Table` is usually the record's own.
template <typename Record, typename Table = RecordTable<Record>>
Record decodeRecord(const JSONValue& value, const CodingPath& path) {
  const auto* object = value.objectValue();
  if (!object) failUnexpected(typeName<Record>(), value, path);
  Record record;
  std::apply([&](const auto&... fields) { (decodeField(record, *object, fields, path), ...); }, Table::fields);
  if constexpr (requires { Table::finish(record, *object, path); }) Table::finish(record, *object, path);
  return record;
}

template <typename Table>
inline constexpr bool writesOwnType = requires { Table::writtenType; };

/// Adds a record's members to an object in the making.
template <typename Record, typename Table = RecordTable<Record>>
void encodeMembers(const Record& record, std::vector<JSONMemberInit>& members) {
  if constexpr (writesOwnType<Table>) members.emplace_back("type", Table::writtenType);
  std::apply([&](const auto&... fields) { (encodeField(record, fields, members), ...); }, Table::fields);
}

template <typename Record, typename Table = RecordTable<Record>>
JSONValue encodeRecord(const Record& record) {
  std::vector<JSONMemberInit> members;
  members.reserve(std::tuple_size_v<std::remove_cvref_t<decltype(Table::fields)>> + 1);
  encodeMembers<Record, Table>(record, members);
  return JSONValue::object(members);
}

template <typename Record>
constexpr bool tableIsComplete() {
  return std::tuple_size_v<std::remove_cvref_t<decltype(RecordTable<Record>::fields)>> == fieldCount<Record>();
}

}  // namespace ormel::coding

namespace ormel {

// Visible only where codecs are defined; everyone else links against the instantiations made there.
template <typename Type>
Type decode(const JSONValue& value) {
  return coding::Codec<Type>::decode(value, coding::CodingPath{});
}

template <typename Type>
JSONValue encode(const Type& value) {
  return coding::Codec<Type>::encode(value);
}

}  // namespace ormel

/// Makes the public entry points for a type whose `Codec` is defined. At global scope, as all of these.
#define ORMEL_DEFINE_PUBLIC_CODING(Type)                                    \
  template ormel::Type ormel::decode<ormel::Type>(const JSONValue&);        \
  template ormel::JSONValue ormel::encode<ormel::Type>(const ormel::Type&); \
  ORMEL_DEFINE_PRINTING(Type)

#define ORMEL_DEFINE_PRINTING(Type)                                      \
  namespace ormel {                                                      \
  std::ostream& operator<<(std::ostream& stream, const Type& value) {    \
    return stream << #Type << ' ' << coding::Codec<Type>::encode(value); \
  }                                                                      \
  }

/// Defines the codec of a type by a reading and a writing function.
#define ORMEL_DEFINE_CODEC_BY(Type, reading, writing)                                                     \
  template <>                                                                                             \
  ormel::Type ormel::coding::Codec<ormel::Type>::decode(const JSONValue& value, const CodingPath& path) { \
    return reading(value, path);                                                                          \
  }                                                                                                       \
  template <>                                                                                             \
  ormel::JSONValue ormel::coding::Codec<ormel::Type>::encode(const ormel::Type& value) {                  \
    return writing(value);                                                                                \
  }                                                                                                       \
  ORMEL_DEFINE_PUBLIC_CODING(Type)

/// Defines the codec of a record from its table.
#define ORMEL_DEFINE_RECORD(Record)                                                                                   \
  static_assert(ormel::coding::tableIsComplete<ormel::Record>(), "a field of " #Record " is missing from its table"); \
  ORMEL_DEFINE_CODEC_BY(Record, decodeRecord<ormel::Record>, encodeRecord)

/// Defines how a type without a JSON form is printed, by a function that writes it as if it had one.
#define ORMEL_DEFINE_PRINTED_BY(Type, writing)                                           \
  template <>                                                                            \
  ormel::JSONValue ormel::coding::Codec<ormel::Type>::encode(const ormel::Type& value) { \
    return writing(value);                                                               \
  }                                                                                      \
  ORMEL_DEFINE_PRINTING(Type)

/// Defines how a record without a JSON form is printed, from a table of its fields.
#define ORMEL_DEFINE_PRINTED_RECORD(Record)                                                                           \
  static_assert(ormel::coding::tableIsComplete<ormel::Record>(), "a field of " #Record " is missing from its table"); \
  ORMEL_DEFINE_PRINTED_BY(Record, encodeRecord)
