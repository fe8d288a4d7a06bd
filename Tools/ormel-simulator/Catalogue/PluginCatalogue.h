#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ormel-simulator/Catalogue/Catalogue.h"

namespace ormel::simulator {

struct KnownPlugin {
  /// The name and the marketplace, with an "@" between them.
  std::string id;
  std::string name;
  /// A row of the data: "summary", "description", "skills", "hooks", "apps" and "mcpServers".
  JSONValue data;
  bool isInstalled = false;
  bool isEnabled = false;
  std::optional<double> installedAt;

  bool isActive() const { return isInstalled && isEnabled; }
  std::string displayName() const;
  JSONValue summaryJSON() const;
};

struct KnownMarketplace {
  std::string name;
  std::string kind;
  /// The path of a local marketplace.
  std::optional<std::string> path;
  std::string displayName;
  std::vector<KnownPlugin> plugins;
  /// Why its plugins could not be read, if so.
  std::optional<std::string> fault;
};

/// The marketplaces that are there from the start, those that were added, and that of the shared plugins, if any.
std::vector<KnownMarketplace> knownMarketplaces(const CatalogueView& view);

/// The plugins that are installed and enabled.
std::vector<KnownPlugin> activePlugins(const CatalogueView& view);

/// Where the skill of a plugin lies.
std::string skillPath(const KnownPlugin& plugin, const std::string& skill);

/// Whether the source or path of a marketplace says that it is to fail, as far as the client can tell.
bool isBrokenSource(const std::string& source);

/// Where an added marketplace lies.
std::string marketplaceRoot(const std::string& name);

/// Makes a plugin known as not installed.
void forgetInstallation(CatalogueDocument& state, const std::string& pluginID);

}  // namespace ormel::simulator
