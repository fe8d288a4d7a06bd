#pragma once

// The definition of the codecs of records; included only by the `.cpp` of a family.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "OrmelSDK/Coding/FieldCount.h"
#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Coding/TypeName.h"
#include "OrmelSDK/Coding/WordIndex.h"

namespace ormel::coding {

/// Whether an object has something other than null under a key.
inline bool hasValue(const JSONObject& object, std::string_view key) {
  const JSONValue* value = object.find(key);
  return value && !value->isNull();
}

/// All keys of a table, each once, and for each field the positions of its own.
template <typename Table>
struct TableKeys {
  static constexpr std::size_t fieldCount = std::tuple_size_v<std::remove_cvref_t<decltype(Table::fields)>>;
  static constexpr std::size_t mostKeys = 4;

  struct Collected {
    WordList<fieldCount * mostKeys> keys;
    std::array<std::array<std::size_t, mostKeys>, fieldCount> positions{};
  };

  static consteval Collected collect() {
    Collected collected;
    std::size_t field = 0;
    const auto add = [&](const auto& keys) {
      std::size_t at = 0;
      for (const std::string_view key : keys) collected.positions[field][at++] = collected.keys.add(key);
      ++field;
    };
    std::apply([&](const auto&... fields) { (add(fields.keys), ...); }, Table::fields);
    return collected;
  }

  static constexpr auto positions = collect().positions;
  static constexpr std::size_t count = collect().keys.count;
  static constexpr auto words = WordTable<count>(collect().keys);
  static constexpr WordIndex index = words.index();
};

/// The values of an object that a table asks for.
template <typename Table>
class FoundValues {
 public:
  explicit FoundValues(const JSONObject& object) { findMembers(object, TableKeys<Table>::index, found_.data()); }

  const JSONValue* at(std::size_t field, std::size_t key) const {
    return found_[TableKeys<Table>::positions[field][key]];
  }

 private:
  std::array<const JSONValue*, TableKeys<Table>::count> found_{};
};

template <typename Value, typename Coder>
void decodeValue(Value& into, const JSONValue& value, const CodingPath& path) {
  if constexpr (Unwrapped<Value>::isOptional) {
    Coder::decodeInto(into.emplace(), value, path);
  } else {
    Coder::decodeInto(into, value, path);
  }
}

/// Reads a field from the first of its keys that has a value other than null; else from the last.
template <std::size_t index, typename Record, typename Table, typename Field>
void decodeField(Record& record, const FoundValues<Table>& found, const Field& field, const CodingPath& path) {
  std::size_t key = 0;
  const JSONValue* value = found.at(index, key);
  while ((!value || value->isNull()) && key + 1 < field.keys.size()) value = found.at(index, ++key);
  if constexpr (Field::presence == Presence::required) {
    if (!value) [[unlikely]]
      failMissingKey(field.keys[key], path);
  } else {
    if (!value || value->isNull()) return;
  }
  decodeValue<typename Field::Value, typename Field::ValueCoder>(record.*Field::member, *value,
                                                                 path.at(field.keys[key]));
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

template <typename Table, typename Record, std::size_t... indices>
void decodeFields(Record& record, const JSONObject& object, const CodingPath& path, std::index_sequence<indices...>) {
  const FoundValues<Table> found(object);
  (decodeField<indices>(record, found, std::get<indices>(Table::fields), path), ...);
}

/// Reads a record by a table of its fields; `Table` is usually the record's own.
template <typename Record, typename Table = RecordTable<Record>>
void decodeRecord(Record& record, const JSONValue& value, const CodingPath& path) {
  constexpr std::size_t fieldCount = std::tuple_size_v<std::remove_cvref_t<decltype(Table::fields)>>;
  if (value.kind() != JSONValue::Kind::object) [[unlikely]]
    failUnexpected(typeName<Record>(), value, path);
  const JSONObject& object = detail::JSONAccess::object(value);
  if constexpr (fieldCount > 0) decodeFields<Table>(record, object, path, std::make_index_sequence<fieldCount>());
  if constexpr (requires { Table::finish(record, object, path); }) Table::finish(record, object, path);
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
  return coding::decodeAs<Type>(value, coding::CodingPath{});
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

/// Defines the codec of a type by a function that reads into a value and one that writes it.
#define ORMEL_DEFINE_CODEC_BY(Type, reading, writing)                                           \
  template <>                                                                                   \
  void ormel::coding::Codec<ormel::Type>::decodeInto(ormel::Type& into, const JSONValue& value, \
                                                     const CodingPath& path) {                  \
    reading(into, value, path);                                                                 \
  }                                                                                             \
  template <>                                                                                   \
  ormel::JSONValue ormel::coding::Codec<ormel::Type>::encode(const ormel::Type& value) {        \
    return writing(value);                                                                      \
  }                                                                                             \
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
