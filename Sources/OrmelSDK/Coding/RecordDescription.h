#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "OrmelSDK/Coding/Codec.h"
#include "OrmelSDK/Coding/Field.h"
#include "OrmelSDK/Coding/WordIndex.h"

namespace ormel::coding {

/// The position of each of a field's keys among all keys of the record.
using KeyPositions = std::array<std::uint8_t, Field::mostKeys>;

/// A record's table in a form that does not depend on its type, so that one function reads all records.
struct RecordDescription {
  std::string_view name;
  std::span<const Field> fields;
  /// Absent for a record without fields.
  const WordIndex* keys = nullptr;
  const KeyPositions* positions = nullptr;
  std::string_view writtenType;
  void (*finish)(void* record, const JSONObject& object, const CodingPath& path) = nullptr;
  /// Params without a member are not sent.
  bool absentWhenEmpty = false;
};

/// Keys of the largest table.
inline constexpr std::size_t mostKeysOfARecord = 96;

void decodeRecord(const RecordDescription& description, void* record, const JSONValue& value, const CodingPath& path);

/// Adds a record's members to an object in the making, behind the `type` of a variant's case if it is one. If the
/// record says its type itself, that comes later and so takes the key.
void encodeMembers(const RecordDescription& description, const void* record, std::vector<JSONMemberInit>& members);

JSONValue encodeRecord(const RecordDescription& description, const void* record);

}  // namespace ormel::coding
