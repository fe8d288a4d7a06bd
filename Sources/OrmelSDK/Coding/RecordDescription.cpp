#include "OrmelSDK/Coding/RecordDescription.h"

#include <algorithm>

#include "OrmelSDK/JSON/JSONStorage.h"

namespace ormel::coding {

namespace {

// Reads a field from the first of its keys that has a value other than null; else from the last.
void decodeField(void* record, const Field& field, const KeyPositions& positions, const JSONValue* const* found,
                 const CodingPath& path) {
  std::size_t key = 0;
  const JSONValue* value = found[positions[key]];
  while ((!value || value->isNull()) && key + 1 < field.keyCount) value = found[positions[++key]];
  if (field.presence == Presence::required) {
    if (!value) failMissingKey(field.keys[key], path);
  } else if (!value || value->isNull()) {
    return;
  }
  field.coder->decodeInto(field.place(record), *value, path.at(field.keys[key]));
}

void decodeFields(const RecordDescription& description, void* record, const JSONObject& object,
                  const CodingPath& path) {
  std::array<const JSONValue*, mostKeysOfARecord> found;
  std::fill_n(found.begin(), description.keys->size(), nullptr);
  findMembers(object, *description.keys, found.data());
  const KeyPositions* positions = description.positions;
  for (const Field& field : description.fields) decodeField(record, field, *positions++, found.data(), path);
}

}  // namespace

void decodeRecord(const RecordDescription& description, void* record, const JSONValue& value, const CodingPath& path) {
  if (value.kind() != JSONValue::Kind::object) failUnexpected(description.name, value, path);
  const JSONObject& object = detail::JSONAccess::object(value);
  if (description.keys) decodeFields(description, record, object, path);
  if (description.finish) description.finish(record, object, path);
}

void encodeMembers(const RecordDescription& description, const void* record, std::vector<JSONMemberInit>& members) {
  if (!description.writtenType.empty()) {
    members.clear();
    members.emplace_back("type", description.writtenType);
  }
  for (const Field& field : description.fields) {
    if (field.whenEmpty == WhenEmpty::written || !field.isEmptyIn(record)) {
      members.emplace_back(field.writtenKey, field.encodedFrom(record));
    } else if (field.whenEmpty == WhenEmpty::null) {
      members.emplace_back(field.writtenKey, JSONValue());
    }
  }
}

JSONValue encodeRecord(const RecordDescription& description, const void* record) {
  std::vector<JSONMemberInit> members;
  members.reserve(description.fields.size() + 1);
  encodeMembers(description, record, members);
  return JSONValue::object(members);
}

}  // namespace ormel::coding
