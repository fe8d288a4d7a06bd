#pragma once

// The definition of the codecs of records; included only by the `.cpp` of a family.

#include <array>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string_view>
#include <utility>

#include "OrmelSDK/Coding/FieldCount.h"
#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Coding/RecordDescription.h"
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
  static constexpr std::size_t fieldCount = std::size(Table::fields);

  struct Collected {
    WordList<fieldCount * Field::mostKeys> keys;
    std::array<KeyPositions, fieldCount> positions{};
  };

  static consteval Collected collect() {
    Collected found;
    for (std::size_t field = 0; field < fieldCount; ++field) {
      for (std::size_t key = 0; key < Table::fields[field].keyCount; ++key) {
        found.positions[field][key] = static_cast<std::uint8_t>(found.keys.add(Table::fields[field].keys[key]));
      }
    }
    return found;
  }

  static constexpr Collected collected = collect();
  static constexpr auto words = WordTable<collected.keys.count>(collected.keys);
  static constexpr WordIndex index = words.index();
  static_assert(collected.keys.count <= mostKeysOfARecord);
};

template <typename Record, typename Table>
void finishRecord(void* record, const JSONObject& object, const CodingPath& path) {
  Table::finish(*static_cast<Record*>(record), object, path);
}

template <typename Record, typename Table>
consteval RecordDescription describe() {
  RecordDescription description;
  description.name = typeName<Record>();
  description.fields = Table::fields;
  if constexpr (std::size(Table::fields) > 0) {
    description.keys = &TableKeys<Table>::index;
    description.positions = TableKeys<Table>::collected.positions.data();
  }
  if constexpr (requires { Table::writtenType; }) description.writtenType = Table::writtenType;
  if constexpr (requires { &Table::finish; }) description.finish = &finishRecord<Record, Table>;
  return description;
}

template <typename Record, typename Table = RecordTable<Record>>
inline constexpr RecordDescription description = describe<Record, Table>();

/// Reads a record by another table than its own. Has the functions of `Codec`, and that of a variant's case.
template <typename Record, typename Table>
struct TableCodec {
  static void decodeInto(Record& into, const JSONValue& value, const CodingPath& path) {
    decodeRecord(description<Record, Table>, &into, value, path);
  }
  static void encodeMembers(const Record& record, std::vector<JSONMemberInit>& members) {
    coding::encodeMembers(description<Record, Table>, &record, members);
  }
};

template <typename Record>
void decodeFromTable(Record& record, const JSONValue& value, const CodingPath& path) {
  decodeRecord(description<Record>, &record, value, path);
}

template <typename Record>
JSONValue encodeFromTable(const Record& record) {
  return encodeRecord(description<Record>, &record);
}

template <typename Table, std::size_t index>
void decodeFieldInline(void* record, const JSONValue* const* found, const CodingPath& path) {
  constexpr const Field& field = Table::fields[index];
  constexpr auto place = field.place;
  constexpr auto decodeInto = field.coder->decodeInto;
  constexpr const KeyPositions& positions = TableKeys<Table>::collected.positions[index];
  std::size_t key = 0;
  const JSONValue* value = found[positions[0]];
  if constexpr (field.keyCount > 1) {
    while ((!value || value->isNull()) && key + 1 < field.keyCount) value = found[positions[++key]];
  }
  if constexpr (field.presence == Presence::required) {
    if (!value) [[unlikely]]
      failMissingKey(field.keys[key], path);
  } else {
    if (!value || value->isNull()) return;
  }
  decodeInto(place(record), *value, path.at(field.keys[key]));
}

/// The same as `decodeRecord`, but with all fields inlined: for records that stream in.
template <typename Record>
void decodeHotRecord(Record& record, const JSONValue& value, const CodingPath& path) {
  using Table = RecordTable<Record>;
  if (value.kind() != JSONValue::Kind::object) [[unlikely]]
    failUnexpected(typeName<Record>(), value, path);
  const JSONObject& object = detail::JSONAccess::object(value);
  std::array<const JSONValue*, TableKeys<Table>::collected.keys.count> found{};
  findMembers(object, TableKeys<Table>::index, found.data());
  [&]<std::size_t... indices>(std::index_sequence<indices...>) {
    (decodeFieldInline<Table, indices>(&record, found.data(), path), ...);
  }(std::make_index_sequence<std::size(Table::fields)>());
  if constexpr (requires { &Table::finish; }) Table::finish(record, object, path);
}

/// Whether each line of the table names a field of the record, and each a different one.
template <typename Record, typename Table = RecordTable<Record>>
consteval bool namesDistinctFields() {
  const std::size_t count = std::size(Table::fields);
  for (std::size_t one = 0; one < count; ++one) {
    if (Table::fields[one].record != &recordIdentity<Record>) return false;
    for (std::size_t other = 0; other < one; ++other) {
      if (Table::fields[one].place == Table::fields[other].place) return false;
    }
  }
  return true;
}

template <typename Table>
consteval bool canBeRead() {
  for (const Field& field : Table::fields) {
    if (field.presence == Presence::unread) return false;
  }
  return true;
}

}  // namespace ormel::coding

namespace ormel {

template <typename Type>
Type decode(const JSONValue& value) {
  return coding::decodeAs<Type>(value, coding::CodingPath{});
}

template <typename Type>
JSONValue encode(const Type& value) {
  return coding::Codec<Type>::encode(value);
}

}  // namespace ormel

// Each of these stands at global scope. Their arguments are names of types and templates, which take no parentheses.
// NOLINTBEGIN(bugprone-macro-parentheses)

/// The public entry points for a type whose codec is defined.
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

/// Defines the comparison that `Type` declares as a friend: field by field, compiled once and not in every file that
/// compares.
#define ORMEL_DEFINE_EQUALITY(Type)                    \
  namespace ormel {                                    \
  bool operator==(const Type&, const Type&) = default; \
  }

#define ORMEL_DEFINE_READING(Type, reading)                                                   \
  namespace ormel::coding {                                                                   \
  void decodeCoded(Coded<Type>, Type& into, const JSONValue& value, const CodingPath& path) { \
    reading(into, value, path);                                                               \
  }                                                                                           \
  }

#define ORMEL_DEFINE_WRITING(Type, writing)                                        \
  namespace ormel::coding {                                                        \
  JSONValue encodeCoded(Coded<Type>, const Type& value) { return writing(value); } \
  }

/// Defines the codec of a type by a function that reads into a value and one that writes it.
#define ORMEL_DEFINE_CODEC_BY(Type, reading, writing) \
  ORMEL_DEFINE_READING(Type, reading)                 \
  ORMEL_DEFINE_WRITING(Type, writing)                 \
  ORMEL_DEFINE_PUBLIC_CODING(Type)

/// Defines how a type without a JSON form is printed, by a function that writes it as if it had one.
#define ORMEL_DEFINE_PRINTED_BY(Type, writing) \
  ORMEL_DEFINE_WRITING(Type, writing)          \
  ORMEL_DEFINE_PRINTING(Type)

/// A word that is not checked.
#define ORMEL_DEFINE_VOCABULARY(Type) ORMEL_DEFINE_PUBLIC_CODING(Type)

#define ORMEL_CHECK_TABLE(Record, Table)                                                       \
  namespace ormel::coding {                                                                    \
  static_assert(namesDistinctFields<Record, Table<Record>>(),                                  \
                "the table of " #Record " names a field twice, or one of another record");     \
  template void tableListsEveryField<Record, std::size(Table<Record>::fields)>(const Record&); \
  }

/// Defines how a record that is a case of a variant is compared, and read and written there; it has no JSON form of its
/// own.
#define ORMEL_DEFINE_CASE(Record) ORMEL_DEFINE_CASE_BY(Record, decodeFromTable)

#define ORMEL_DEFINE_CASE_BY(Record, reading) \
  ORMEL_DEFINE_EQUALITY(Record)               \
  ORMEL_DEFINE_TABLE_CODING(Record, reading)

#define ORMEL_DEFINE_TABLE_CODING(Record, reading)                                      \
  ORMEL_CHECK_TABLE(Record, RecordTable)                                                \
  static_assert(ormel::coding::canBeRead<ormel::coding::RecordTable<ormel::Record>>(),  \
                #Record " has a field that is only printed");                           \
  namespace ormel::coding {                                                             \
  const RecordDescription& descriptionOf(Coded<Record>) { return description<Record>; } \
  }                                                                                     \
  ORMEL_DEFINE_READING(Record, reading)                                                 \
  ORMEL_DEFINE_WRITING(Record, encodeFromTable)

/// Defines the codec of a record from its table, and its comparison.
#define ORMEL_DEFINE_RECORD(Record)             \
  ORMEL_DEFINE_CASE_BY(Record, decodeFromTable) \
  ORMEL_DEFINE_PUBLIC_CODING(Record)

/// The same for a record that can be a constant expression: its header says how it is compared.
#define ORMEL_DEFINE_CONSTANT_RECORD(Record)         \
  ORMEL_DEFINE_TABLE_CODING(Record, decodeFromTable) \
  ORMEL_DEFINE_PUBLIC_CODING(Record)

/// The same for a record that streams in: faster to read, slower to compile.
#define ORMEL_DEFINE_HOT_RECORD(Record)         \
  ORMEL_DEFINE_CASE_BY(Record, decodeHotRecord) \
  ORMEL_DEFINE_PUBLIC_CODING(Record)

/// Defines how a record without a JSON form is printed, from a table of its fields, and compared.
#define ORMEL_DEFINE_PRINTED_RECORD(Record) \
  ORMEL_CHECK_TABLE(Record, RecordTable)    \
  ORMEL_DEFINE_EQUALITY(Record)             \
  ORMEL_DEFINE_PRINTED_BY(Record, encodeFromTable)
// NOLINTEND(bugprone-macro-parentheses)
