#include "ormel-simulator/Catalogue/PluginCatalogue.h"

#include <utility>

#include "ormel-simulator/Catalogue/Configuration.h"
#include "ormel-simulator/Catalogue/PluginData.h"
#include "ormel-simulator/Catalogue/PluginShares.h"
#include "ormel-simulator/Requests/JSONMembers.h"

namespace ormel::simulator {

namespace {

KnownPlugin knownPlugin(const CatalogueView& view, const std::string& marketplace, const JSONValue& data) {
  const JSONValue summary = anyMember(data, "summary");
  KnownPlugin plugin;
  plugin.name = textMember(summary, "name").value_or("");
  plugin.id = plugin.name + "@" + marketplace;
  plugin.data = data;
  const JSONValue config = valueAt(view.config, KeyPath{"plugins", plugin.id});
  const bool comesInstalled = textMember(summary, "installPolicy") == "INSTALLED_BY_DEFAULT" &&
                              view.state.at({"plugins", "removed", plugin.id}).isNull();
  plugin.isInstalled = !config.isNull() || comesInstalled;
  plugin.isEnabled = plugin.isInstalled && anyMember(config, "enabled").boolValue().value_or(true);
  if (plugin.isInstalled) plugin.installedAt = view.state.at({"plugins", "installedAt", plugin.id}).numberValue();
  return plugin;
}

KnownMarketplace builtInMarketplace(const CatalogueView& view, const JSONValue& data) {
  KnownMarketplace marketplace{.name = textMember(data, "name").value_or(""),
                               .kind = textMember(data, "kind").value_or(""),
                               .path = textMember(data, "path"),
                               .displayName = textMember(data, "displayName").value_or(""),
                               .plugins = {},
                               .fault = {}};
  for (const JSONValue& plugin : elementsOf(anyMember(data, "plugins"))) {
    marketplace.plugins.push_back(knownPlugin(view, marketplace.name, plugin));
  }
  return marketplace;
}

/// Each marketplace that was added has one plugin.
JSONValue starterPlugin(const std::string& marketplace) {
  const std::string name = marketplace + "-starter";
  const std::string path = marketplaceRoot(marketplace) + "/" + name;
  return JSONValue::object(
      {{"summary", JSONValue::object({{"name", name},
                                      {"version", "1.0.0"},
                                      {"source", JSONValue::object({{"type", "local"}, {"path", path}})},
                                      {"installPolicy", "AVAILABLE"},
                                      {"authPolicy", "ON_USE"},
                                      {"availability", "AVAILABLE"},
                                      {"keywords", JSONValue::array()}})},
       {"description", "The first plugin of " + marketplace},
       {"skills", JSONValue::array({JSONValue::object({{"name", "start"}, {"description", "Shows how to begin"}})})}});
}

KnownMarketplace addedMarketplace(const CatalogueView& view, const std::string& name) {
  const std::string source = textMember(view.state.at({"marketplaces", name}), "source").value_or("");
  KnownMarketplace marketplace{.name = name,
                               .kind = "local",
                               .path = marketplaceRoot(name) + "/marketplace.json",
                               .displayName = name,
                               .plugins = {},
                               .fault = {}};
  if (isBrokenSource(source)) {
    marketplace.fault = "the marketplace " + name + " cannot be read from " + source;
  } else {
    marketplace.plugins.push_back(knownPlugin(view, name, starterPlugin(name)));
  }
  return marketplace;
}

KnownMarketplace sharedMarketplace(const CatalogueView& view) {
  KnownMarketplace marketplace{.name = sharedMarketplaceName,
                               .kind = "shared-with-me",
                               .path = {},
                               .displayName = "Shared plugins",
                               .plugins = {},
                               .fault = {}};
  for (const JSONValue& data : sharedPlugins(view.state)) {
    marketplace.plugins.push_back(knownPlugin(view, marketplace.name, data));
  }
  return marketplace;
}

}  // namespace

std::string KnownPlugin::displayName() const {
  const JSONValue interface = anyMember(anyMember(data, "summary"), "interface");
  return textMember(interface, "displayName").value_or(name);
}

JSONValue KnownPlugin::summaryJSON() const {
  const JSONValue summary = anyMember(data, "summary");
  JSONObjectBuilder added;
  added.set("id", id).set("installed", isInstalled).set("enabled", isEnabled).set("installedAt", installedAt);
  if (isInstalled) added.set("localVersion", anyMember(summary, "version"));
  return merged(summary, added.build());
}

std::vector<KnownMarketplace> knownMarketplaces(const CatalogueView& view) {
  std::vector<KnownMarketplace> marketplaces;
  for (const JSONValue& data : elementsOf(builtInMarketplaces())) {
    marketplaces.push_back(builtInMarketplace(view, data));
  }
  for (const std::string& name : keysOf(view.state.at({"marketplaces"}))) {
    marketplaces.push_back(addedMarketplace(view, name));
  }
  KnownMarketplace shared = sharedMarketplace(view);
  if (!shared.plugins.empty()) marketplaces.push_back(std::move(shared));
  return marketplaces;
}

std::vector<KnownPlugin> activePlugins(const CatalogueView& view) {
  std::vector<KnownPlugin> active;
  for (KnownMarketplace& marketplace : knownMarketplaces(view)) {
    for (KnownPlugin& plugin : marketplace.plugins) {
      if (plugin.isActive()) active.push_back(std::move(plugin));
    }
  }
  return active;
}

std::string skillPath(const KnownPlugin& plugin, const std::string& skill) {
  return "/ormel/plugins/" + plugin.id + "/skills/" + skill + "/skill.md";
}

bool isBrokenSource(const std::string& source) { return source.find("broken") != std::string::npos; }

std::string marketplaceRoot(const std::string& name) { return "/ormel/marketplaces/" + name; }

void forgetInstallation(CatalogueDocument& state, const std::string& pluginID) {
  if (!state.at({"config", "values", "plugins", pluginID}).isNull()) setConfig(state, {"plugins", pluginID}, {});
  state.put({"plugins", "installedAt", pluginID}, {});
  state.put({"plugins", "removed", pluginID}, true);
}

}  // namespace ormel::simulator
