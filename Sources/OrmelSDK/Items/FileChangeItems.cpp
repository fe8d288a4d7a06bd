#include "OrmelSDK/Items/FileChangeItems.h"

#include <string>
#include <string_view>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Coding/TaggedVariant.h"

template <>
struct ormel::coding::EnumerationTable<ormel::PatchApplyStatus> {
  static constexpr auto rule = tolerant(PatchApplyStatus::failed);
  static constexpr Word<PatchApplyStatus> words[] = {
      {PatchApplyStatus::inProgress, "in_progress"},
      {PatchApplyStatus::completed, "completed"},
      {PatchApplyStatus::failed, "failed"},
      {PatchApplyStatus::declined, "declined"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::PatchChangeKind> {
  static constexpr auto rule = closed;
  static constexpr Word<PatchChangeKind> words[] = {
      {PatchChangeKind::add, "add"},
      {PatchChangeKind::delete_, "delete"},
      {PatchChangeKind::update, "update"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::FileUpdateChange> {
  static constexpr Field fields[] = {
      required<&FileUpdateChange::path>("path"),
      required<&FileUpdateChange::kind>("kind"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::FileChangeItem> {
  static constexpr Field fields[] = {
      required<&FileChangeItem::id>("id"),
      required<&FileChangeItem::changes>("changes"),
      required<&FileChangeItem::status>("status"),
  };
};

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
ORMEL_DEFINE_HOT_RECORD(FileUpdateChange)
ORMEL_DEFINE_HOT_RECORD(FileChangeItem)
