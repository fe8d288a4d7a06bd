#include "OrmelSDK/Items/FileChangeItems.h"

#include <string>
#include <string_view>

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Coding/TaggedVariant.h"
#include "OrmelSDK/Items/FileChangeItemsTables.h"

namespace ormel::coding {

namespace {

PatchChangeKind patchChangeKind(std::string_view word, const CodingPath& path) {
  const auto kind = enumerationCase<PatchChangeKind>(word);
  if (!kind) failCorrupted("Unknown patch change kind: " + std::string(word), path);
  return *kind;
}

void decodePatchChangeKind(PatchChangeKind& into, const JSONValue& value, const CodingPath& path) {
  if (const auto word = value.stringValue()) {
    into = patchChangeKind(*word, path);
  } else {
    into = patchChangeKind(decodeType(value, typeName<PatchChangeKind>(), path), path.at("type"));
  }
}

}  // namespace

}  // namespace ormel::coding

ORMEL_DEFINE_ENUMERATION(PatchApplyStatus)
ORMEL_DEFINE_ENUMERATION_BY(PatchChangeKind, decodePatchChangeKind)
ORMEL_DEFINE_RECORD(FileUpdateChange)
ORMEL_DEFINE_RECORD(FileChangeItem)
