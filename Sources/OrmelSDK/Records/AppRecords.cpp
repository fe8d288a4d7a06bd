#include "OrmelSDK/Records/AppRecords.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::AppInfo> {
  static constexpr Field fields[] = {
      required<&AppInfo::id>("id"),
      required<&AppInfo::name>("name"),
      optional<&AppInfo::description>("description"),
      optional<&AppInfo::logoURL>("logoUrl"),
      optional<&AppInfo::logoURLDark>("logoUrlDark"),
      optional<&AppInfo::iconAssets>("iconAssets"),
      optional<&AppInfo::iconDarkAssets>("iconDarkAssets"),
      optional<&AppInfo::distributionChannel>("distributionChannel"),
      optional<&AppInfo::branding>("branding"),
      optional<&AppInfo::appMetadata>("appMetadata"),
      optional<&AppInfo::labels>("labels"),
      optional<&AppInfo::installURL>("installUrl"),
      defaulted<&AppInfo::isAccessible>("isAccessible"),
      defaulted<&AppInfo::isEnabled>("isEnabled"),
      defaulted<&AppInfo::pluginDisplayNames>("pluginDisplayNames"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AppsListResponse> {
  static constexpr Field fields[] = {
      required<&AppsListResponse::data>("data"),
      optional<&AppsListResponse::nextCursor>("nextCursor"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::InstalledApp> {
  static constexpr Field fields[] = {
      required<&InstalledApp::id>("id"),
      optional<&InstalledApp::runtimeName>("runtimeName"),
      required<&InstalledApp::enabled>("enabled"),
      required<&InstalledApp::callable>("callable"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AppsInstalledResponse> {
  static constexpr Field fields[] = {
      required<&AppsInstalledResponse::apps>("apps"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AppToolSummary> {
  static constexpr Field fields[] = {
      required<&AppToolSummary::name>("name"),
      optional<&AppToolSummary::title>("title"),
      required<&AppToolSummary::description>("description"),
      defaulted<&AppToolSummary::isEnabled>("isEnabled"),
      optional<&AppToolSummary::disabledReason>("disabledReason"),
      defaulted<&AppToolSummary::isReadOnly>("isReadOnly"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ConnectorMetadata> {
  static constexpr Field fields[] = {
      required<&ConnectorMetadata::id>("id"),
      required<&ConnectorMetadata::name>("name"),
      optional<&ConnectorMetadata::description>("description"),
      optional<&ConnectorMetadata::iconURL>("iconUrl"),
      optional<&ConnectorMetadata::iconURLDark>("iconUrlDark"),
      optional<&ConnectorMetadata::distributionChannel>("distributionChannel"),
      optional<&ConnectorMetadata::installURL>("installUrl"),
      defaulted<&ConnectorMetadata::pluginDisplayNames>("pluginDisplayNames"),
      optional<&ConnectorMetadata::toolSummaries>("toolSummaries"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AppsReadResponse> {
  static constexpr Field fields[] = {
      required<&AppsReadResponse::apps>("apps"),
      required<&AppsReadResponse::missingAppIDs>("missingAppIds"),
  };
};

ORMEL_DEFINE_RECORD(AppInfo)
ORMEL_DEFINE_RECORD(AppsListResponse)
ORMEL_DEFINE_RECORD(InstalledApp)
ORMEL_DEFINE_RECORD(AppsInstalledResponse)
ORMEL_DEFINE_RECORD(AppToolSummary)
ORMEL_DEFINE_RECORD(ConnectorMetadata)
ORMEL_DEFINE_RECORD(AppsReadResponse)
