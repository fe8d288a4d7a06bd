#include "OrmelSDK/Records/PermissionRecords.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::PermissionProfileSummary> {
  static constexpr Field fields[] = {
      required<&PermissionProfileSummary::id>("id"),
      optional<&PermissionProfileSummary::description>("description"),
      defaulted<&PermissionProfileSummary::allowed>("allowed"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::PermissionProfileListResponse> {
  static constexpr Field fields[] = {
      required<&PermissionProfileListResponse::data>("data"),
      optional<&PermissionProfileListResponse::nextCursor>("nextCursor"),
  };
};

ORMEL_DEFINE_RECORD(PermissionProfileSummary)
ORMEL_DEFINE_RECORD(PermissionProfileListResponse)
