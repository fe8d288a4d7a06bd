#pragma once

#include <array>
#include <tuple>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Items/FileChangeItems.h"

template <>
struct ormel::coding::EnumerationTable<ormel::PatchApplyStatus> {
  static constexpr auto words = tolerant(
      PatchApplyStatus::failed,
      std::array{Word{PatchApplyStatus::inProgress, "in_progress"}, Word{PatchApplyStatus::completed, "completed"},
                 Word{PatchApplyStatus::failed, "failed"}, Word{PatchApplyStatus::declined, "declined"}});
};
ORMEL_DECLARE_ENUMERATION(PatchApplyStatus)

template <>
struct ormel::coding::EnumerationTable<ormel::PatchChangeKind> {
  static constexpr auto words =
      closed(std::array{Word{PatchChangeKind::add, "add"}, Word{PatchChangeKind::delete_, "delete"},
                        Word{PatchChangeKind::update, "update"}});
};
ORMEL_DECLARE_ENUMERATION(PatchChangeKind)

template <>
struct ormel::coding::RecordTable<ormel::FileUpdateChange> {
  static constexpr auto fields =
      std::tuple(required<&FileUpdateChange::path>("path"), required<&FileUpdateChange::kind>("kind"));
};
ORMEL_DECLARE_CODEC(FileUpdateChange)

template <>
struct ormel::coding::RecordTable<ormel::FileChangeItem> {
  static constexpr auto fields =
      std::tuple(required<&FileChangeItem::id>("id"), required<&FileChangeItem::changes>("changes"),
                 required<&FileChangeItem::status>("status"));
};
ORMEL_DECLARE_CODEC(FileChangeItem)
