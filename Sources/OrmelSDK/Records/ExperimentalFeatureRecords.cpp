#include "OrmelSDK/Records/ExperimentalFeatureRecords.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::ExperimentalFeature> {
  static constexpr Field fields[] = {
      required<&ExperimentalFeature::name>("name"),
      required<&ExperimentalFeature::stage>("stage"),
      optional<&ExperimentalFeature::displayName>("displayName"),
      optional<&ExperimentalFeature::description>("description"),
      optional<&ExperimentalFeature::announcement>("announcement"),
      required<&ExperimentalFeature::enabled>("enabled"),
      required<&ExperimentalFeature::defaultEnabled>("defaultEnabled"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ExperimentalFeatureListResponse> {
  static constexpr Field fields[] = {
      required<&ExperimentalFeatureListResponse::data>("data"),
      optional<&ExperimentalFeatureListResponse::nextCursor>("nextCursor"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ExperimentalFeatureEnablementSetResponse> {
  static constexpr Field fields[] = {
      required<&ExperimentalFeatureEnablementSetResponse::enablement>("enablement"),
  };
};

ORMEL_DEFINE_RECORD(ExperimentalFeature)
ORMEL_DEFINE_RECORD(ExperimentalFeatureListResponse)
ORMEL_DEFINE_RECORD(ExperimentalFeatureEnablementSetResponse)
