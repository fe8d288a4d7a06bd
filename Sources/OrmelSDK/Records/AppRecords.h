#pragma once

#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

// Every type here has a JSON form.
namespace ormel {

/// An app of the catalogue.
struct AppInfo {
  std::string id;
  std::string name;
  std::optional<std::string> description;
  std::optional<std::string> logoURL;
  /// The logo for a dark background.
  std::optional<std::string> logoURLDark;
  /// Addresses of icons by their names.
  std::optional<std::map<std::string, std::string>> iconAssets;
  /// Addresses of icons for a dark background by their names.
  std::optional<std::map<std::string, std::string>> iconDarkAssets;
  std::optional<std::string> distributionChannel;
  /// As the server gives it.
  std::optional<JSONValue> branding;
  /// As the server gives it.
  std::optional<JSONValue> appMetadata;
  std::optional<std::map<std::string, std::string>> labels;
  /// Where the user installs the app.
  std::optional<std::string> installURL;
  /// Whether the user may use the app.
  bool isAccessible = false;
  bool isEnabled = false;
  /// The plugins that use the app, as they are shown.
  std::vector<std::string> pluginDisplayNames;
  friend bool operator==(const AppInfo&, const AppInfo&);
  friend std::ostream& operator<<(std::ostream& stream, const AppInfo& value);
};

/// A page of the catalogue of apps.
struct AppsListResponse {
  std::vector<AppInfo> data;
  /// Absent on the last page.
  std::optional<std::string> nextCursor;
  friend bool operator==(const AppsListResponse&, const AppsListResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const AppsListResponse& value);
};

/// An app as the server runs it.
struct InstalledApp {
  std::string id;
  /// The name that the app has while it runs, if the server tells one.
  std::optional<std::string> runtimeName;
  bool enabled = false;
  /// Whether its tools can be called now.
  bool callable = false;
  friend bool operator==(const InstalledApp&, const InstalledApp&);
  friend std::ostream& operator<<(std::ostream& stream, const InstalledApp& value);
};

/// The apps that are installed.
struct AppsInstalledResponse {
  std::vector<InstalledApp> apps;
  friend bool operator==(const AppsInstalledResponse&, const AppsInstalledResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const AppsInstalledResponse& value);
};

/// A tool of an app.
struct AppToolSummary {
  std::string name;
  std::optional<std::string> title;
  std::string description;
  /// True unless the server says otherwise.
  bool isEnabled = true;
  /// Why the tool is not enabled.
  std::optional<std::string> disabledReason;
  /// Whether the tool changes nothing.
  bool isReadOnly = false;
  friend bool operator==(const AppToolSummary&, const AppToolSummary&);
  friend std::ostream& operator<<(std::ostream& stream, const AppToolSummary& value);
};

/// The catalogue's data about one app that was asked for.
struct ConnectorMetadata {
  std::string id;
  std::string name;
  std::optional<std::string> description;
  std::optional<std::string> iconURL;
  /// The icon for a dark background.
  std::optional<std::string> iconURLDark;
  std::optional<std::string> distributionChannel;
  /// Where the user installs the app.
  std::optional<std::string> installURL;
  /// The plugins that use the app, as they are shown.
  std::vector<std::string> pluginDisplayNames;
  /// Absent unless they were asked for.
  std::optional<std::vector<AppToolSummary>> toolSummaries;
  friend bool operator==(const ConnectorMetadata&, const ConnectorMetadata&);
  friend std::ostream& operator<<(std::ostream& stream, const ConnectorMetadata& value);
};

/// The apps that were asked for.
struct AppsReadResponse {
  std::vector<ConnectorMetadata> apps;
  /// The ids that the server does not know.
  std::vector<std::string> missingAppIDs;
  friend bool operator==(const AppsReadResponse&, const AppsReadResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const AppsReadResponse& value);
};

}  // namespace ormel
