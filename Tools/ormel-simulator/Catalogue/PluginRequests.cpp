#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <set>

#include "ormel-simulator/Catalogue/AppCatalogue.h"
#include "ormel-simulator/Catalogue/Configuration.h"
#include "ormel-simulator/Catalogue/Families.h"
#include "ormel-simulator/Catalogue/PluginCatalogue.h"
#include "ormel-simulator/Catalogue/Skills.h"
#include "ormel-simulator/Requests/AgentTime.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

using PluginFilter = std::function<bool(const KnownPlugin&)>;

JSONValue marketplaceJSON(const KnownMarketplace& marketplace, const PluginFilter& lets) {
  std::vector<JSONValue> plugins;
  for (const KnownPlugin& plugin : marketplace.plugins) {
    if (lets(plugin)) plugins.push_back(plugin.summaryJSON());
  }
  return JSONValue::object({{"name", marketplace.name},
                            {"path", textOrNull(marketplace.path)},
                            {"interface", JSONValue::object({{"displayName", marketplace.displayName}})},
                            {"plugins", JSONValue::array(plugins)}});
}

JSONValue loadErrors(const std::vector<KnownMarketplace>& marketplaces) {
  std::vector<JSONValue> errors;
  for (const KnownMarketplace& marketplace : marketplaces) {
    if (!marketplace.fault) continue;
    errors.push_back(JSONValue::object(
        {{"marketplacePath", marketplace.path.value_or(marketplace.name)}, {"message", *marketplace.fault}}));
  }
  return JSONValue::array(errors);
}

std::optional<std::set<std::string>> wantedKinds(const RequestParams& params) {
  const auto kinds = params.textsIfGiven("marketplaceKinds");
  if (!kinds) return std::nullopt;
  for (const std::string& kind : *kinds) {
    RequestParams(JSONValue::object({{"marketplaceKinds", kind}}))
        .word("marketplaceKinds", {"local", "vertical", "workspace-directory", "shared-with-me"});
  }
  return std::set<std::string>(kinds->begin(), kinds->end());
}

JSONValue listPlugins(Catalogue& catalogue, const RequestParams& params) {
  params.textsIfGiven("cwds");
  params.flag("forceRefetch");
  const auto kinds = wantedKinds(params);
  std::vector<KnownMarketplace> marketplaces = knownMarketplaces(catalogue.view());
  if (kinds) {
    std::erase_if(marketplaces,
                  [&](const KnownMarketplace& marketplace) { return !kinds->contains(marketplace.kind); });
  }
  std::vector<JSONValue> entries;
  std::vector<JSONValue> featured;
  for (const KnownMarketplace& marketplace : marketplaces) {
    if (!marketplace.fault) entries.push_back(marketplaceJSON(marketplace, [](const KnownPlugin&) { return true; }));
    for (const KnownPlugin& plugin : marketplace.plugins) {
      if (flagMember(plugin.data, "featured")) featured.emplace_back(plugin.id);
    }
  }
  return JSONValue::object({{"marketplaces", JSONValue::array(entries)},
                            {"marketplaceLoadErrors", loadErrors(marketplaces)},
                            {"remoteSyncError", {}},
                            {"featuredPluginIds", JSONValue::array(featured)}});
}

JSONValue listInstalledPlugins(Catalogue& catalogue, const RequestParams& params) {
  params.textsIfGiven("cwds");
  const std::vector<std::string> suggested =
      params.textsIfGiven("installSuggestionPluginNames").value_or(std::vector<std::string>());
  const PluginFilter isWanted = [&](const KnownPlugin& plugin) {
    return plugin.isInstalled || std::find(suggested.begin(), suggested.end(), plugin.name) != suggested.end();
  };
  const std::vector<KnownMarketplace> marketplaces = knownMarketplaces(catalogue.view());
  std::vector<JSONValue> entries;
  for (const KnownMarketplace& marketplace : marketplaces) {
    if (std::any_of(marketplace.plugins.begin(), marketplace.plugins.end(), isWanted)) {
      entries.push_back(marketplaceJSON(marketplace, isWanted));
    }
  }
  return JSONValue::object(
      {{"marketplaces", JSONValue::array(entries)}, {"marketplaceLoadErrors", loadErrors(marketplaces)}});
}

struct AddressedPlugin {
  KnownMarketplace marketplace;
  KnownPlugin plugin;
};

AddressedPlugin addressedPlugin(const CatalogueView& view, const RequestParams& params) {
  const std::string name = params.text("pluginName");
  const auto path = params.textIfGiven("marketplacePath");
  const auto remote = params.textIfGiven("remoteMarketplaceName");
  if (path.has_value() == remote.has_value()) {
    throw Refusal(invalidParams, "either marketplacePath or remoteMarketplaceName must be given, and not both");
  }
  for (const KnownMarketplace& marketplace : knownMarketplaces(view)) {
    const bool isAddressed = path ? marketplace.path == path : !marketplace.path && marketplace.name == *remote;
    if (!isAddressed) continue;
    for (const KnownPlugin& plugin : marketplace.plugins) {
      if (plugin.name == name) return {marketplace, plugin};
    }
    throw Refusal(invalidParams, "the marketplace " + marketplace.name + " has no plugin " + name);
  }
  throw Refusal(invalidParams, "there is no marketplace " + path.value_or(remote.value_or("")));
}

JSONValue hookSummaries(const KnownPlugin& plugin) {
  std::vector<JSONValue> hooks;
  for (const JSONValue& hook : elementsOf(anyMember(plugin.data, "hooks"))) {
    hooks.push_back(JSONValue::object({{"key", anyMember(hook, "key")}, {"eventName", anyMember(hook, "eventName")}}));
  }
  return JSONValue::array(hooks);
}

std::vector<JSONValue> appSummaries(const KnownPlugin& plugin) {
  std::vector<JSONValue> apps;
  for (const JSONValue& id : elementsOf(anyMember(plugin.data, "apps"))) {
    apps.push_back(appSummary(std::string(id.stringValue().value_or(""))));
  }
  return apps;
}

JSONValue readPlugin(Catalogue& catalogue, const RequestParams& params) {
  const CatalogueView view = catalogue.view();
  const AddressedPlugin found = addressedPlugin(view, params);
  const JSONValue servers = anyMember(found.plugin.data, "mcpServers");
  const JSONValue detail = JSONValue::object({{"marketplaceName", found.marketplace.name},
                                              {"marketplacePath", textOrNull(found.marketplace.path)},
                                              {"summary", found.plugin.summaryJSON()},
                                              {"description", anyMember(found.plugin.data, "description")},
                                              {"skills", JSONValue::array(skillsOfPlugin(view, found.plugin))},
                                              {"hooks", hookSummaries(found.plugin)},
                                              {"apps", JSONValue::array(appSummaries(found.plugin))},
                                              {"mcpServers", servers.isNull() ? JSONValue::array() : servers}});
  return JSONValue::object({{"plugin", detail}});
}

void announceContributions(Catalogue& catalogue) {
  catalogue.client().notify("skills/changed", JSONValue::object());
  catalogue.client().notify("app/list/updated",
                            JSONValue::object({{"data", JSONValue::array(appInfos(catalogue.view()))}}));
}

JSONValue installPlugin(Catalogue& catalogue, const RequestParams& params) {
  params.flag("forceRemoteSync");
  const KnownPlugin plugin = addressedPlugin(catalogue.view(), params).plugin;
  const JSONValue summary = anyMember(plugin.data, "summary");
  if (textMember(summary, "installPolicy") == "NOT_AVAILABLE") {
    throw Refusal(invalidRequest, "the plugin " + plugin.id + " cannot be installed: " +
                                      textMember(summary, "disabledReason").value_or("it is not available"));
  }
  catalogue.state().change([&](CatalogueDocument& state) {
    setConfig(state, {"plugins", plugin.id, "enabled"}, true);
    state.put({"plugins", "installedAt", plugin.id}, std::floor(secondsNow()));
    state.put({"plugins", "removed", plugin.id}, {});
  });
  announceContributions(catalogue);
  std::vector<JSONValue> needy = appSummaries(plugin);
  std::erase_if(needy, [](const JSONValue& app) { return !flagMember(app, "needsAuth"); });
  return JSONValue::object(
      {{"authPolicy", anyMember(summary, "authPolicy")}, {"appsNeedingAuth", JSONValue::array(needy)}});
}

JSONValue uninstallPlugin(Catalogue& catalogue, const RequestParams& params) {
  params.flag("forceRemoteSync");
  const std::string id = params.text("pluginId");
  bool isKnown = false;
  for (const KnownMarketplace& marketplace : knownMarketplaces(catalogue.view())) {
    for (const KnownPlugin& plugin : marketplace.plugins) {
      isKnown = isKnown || (plugin.id == id && plugin.isInstalled);
    }
  }
  if (!isKnown) throw Refusal(invalidParams, "no plugin with the pluginId " + id + " is installed");
  catalogue.state().change([&](CatalogueDocument& state) { forgetInstallation(state, id); });
  announceContributions(catalogue);
  return JSONValue::object();
}

JSONValue readPluginSkill(Catalogue& catalogue, const RequestParams& params) {
  const std::string marketplaceName = params.text("remoteMarketplaceName");
  const std::string pluginID = params.text("remotePluginId");
  const std::string skillName = params.text("skillName");
  for (const KnownMarketplace& marketplace : knownMarketplaces(catalogue.view())) {
    if (marketplace.path || marketplace.name != marketplaceName) continue;
    for (const KnownPlugin& plugin : marketplace.plugins) {
      if (textMember(anyMember(plugin.data, "summary"), "remotePluginId") != pluginID) continue;
      for (const JSONValue& skill : elementsOf(anyMember(plugin.data, "skills"))) {
        if (textMember(skill, "name") == skillName) {
          return JSONValue::object({{"contents", anyMember(skill, "contents")}});
        }
      }
    }
  }
  throw Refusal(invalidParams,
                "there is no skill " + skillName + " of the plugin " + pluginID + " in " + marketplaceName);
}

constexpr auto pluginRows = std::to_array<CatalogueRequest>({
    {"plugin/list", listPlugins},
    {"plugin/installed", listInstalledPlugins},
    {"plugin/read", readPlugin},
    {"plugin/install", installPlugin},
    {"plugin/uninstall", uninstallPlugin},
    {"plugin/skill/read", readPluginSkill},
});

}  // namespace

CatalogueRequests pluginRequests() { return pluginRows; }

}  // namespace ormel::simulator
