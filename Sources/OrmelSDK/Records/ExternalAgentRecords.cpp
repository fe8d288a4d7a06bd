#include "OrmelSDK/Records/ExternalAgentRecords.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::ExternalAgentConfigMigrationItem> {
  static constexpr Field fields[] = {
      required<&ExternalAgentConfigMigrationItem::itemType>("itemType"),
      required<&ExternalAgentConfigMigrationItem::description>("description"),
      optional<&ExternalAgentConfigMigrationItem::cwd>("cwd").nullWhenAbsent(),
      optional<&ExternalAgentConfigMigrationItem::details>("details").nullWhenAbsent(),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ExternalAgentConfigDetectResponse> {
  static constexpr Field fields[] = {
      required<&ExternalAgentConfigDetectResponse::items>("items"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ExternalAgentConfigImportResponse> {
  static constexpr Field fields[] = {
      required<&ExternalAgentConfigImportResponse::importID>("importId"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ExternalAgentConfigImportHistory> {
  static constexpr Field fields[] = {
      required<&ExternalAgentConfigImportHistory::importID>("importId"),
      required<&ExternalAgentConfigImportHistory::completedAtMilliseconds>("completedAtMs"),
      required<&ExternalAgentConfigImportHistory::successes>("successes"),
      required<&ExternalAgentConfigImportHistory::failures>("failures"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ExternalAgentConfigImportHistoriesReadResponse> {
  static constexpr Field fields[] = {
      required<&ExternalAgentConfigImportHistoriesReadResponse::data>("data"),
  };
};

ORMEL_DEFINE_RECORD(ExternalAgentConfigMigrationItem)
ORMEL_DEFINE_RECORD(ExternalAgentConfigDetectResponse)
ORMEL_DEFINE_RECORD(ExternalAgentConfigImportResponse)
ORMEL_DEFINE_RECORD(ExternalAgentConfigImportHistory)
ORMEL_DEFINE_RECORD(ExternalAgentConfigImportHistoriesReadResponse)
