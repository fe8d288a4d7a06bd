#include <array>

#include "ormel-simulator/Catalogue/AppCatalogue.h"
#include "ormel-simulator/Catalogue/AppData.h"
#include "ormel-simulator/Catalogue/CataloguePage.h"
#include "ormel-simulator/Catalogue/Families.h"
#include "ormel-simulator/Catalogue/PluginCatalogue.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

/// The members of an app that are told as they stand.
constexpr auto toldOfApp =
    std::to_array<const char*>({"id", "name", "description", "logoUrl", "logoUrlDark", "iconAssets", "iconDarkAssets",
                                "distributionChannel", "branding", "appMetadata", "labels", "installUrl"});

std::string appID(const JSONValue& app) { return textMember(app, "id").value_or(""); }

bool isAppEnabled(const CatalogueView& view, const std::string& id) {
  const auto usual = valueAt(view.config, KeyPath{"apps", "_default", "enabled"}).boolValue();
  return valueAt(view.config, KeyPath{"apps", id, "enabled"}).boolValue().value_or(usual.value_or(true));
}

JSONValue pluginsWithApp(const std::vector<KnownPlugin>& active, const std::string& id) {
  std::vector<JSONValue> names;
  for (const KnownPlugin& plugin : active) {
    if (holdsText(anyMember(plugin.data, "apps"), id)) names.emplace_back(plugin.displayName());
  }
  return JSONValue::array(names);
}

JSONValue listApps(Catalogue& catalogue, const RequestParams& params) {
  if (const auto thread = params.textIfGiven("threadId")) catalogue.settings().requireThread(*thread);
  const std::vector<JSONValue> apps = appInfos(catalogue.view());
  const JSONValue page = pageOfListing("app/list", apps, "id", params);
  if (params.flag("forceRefetch")) {
    catalogue.client().notify("app/list/updated", JSONValue::object({{"data", JSONValue::array(apps)}}));
  }
  return page;
}

JSONValue listInstalledApps(Catalogue& catalogue, const RequestParams& params) {
  params.flag("forceRefresh");
  if (const auto thread = params.textIfGiven("threadId")) catalogue.settings().requireThread(*thread);
  const CatalogueView view = catalogue.view();
  std::vector<JSONValue> installed;
  for (const JSONValue& app : elementsOf(appDescriptions())) {
    if (!flagMember(app, "connected")) continue;
    const bool enabled = isAppEnabled(view, appID(app));
    installed.push_back(JSONValue::object({{"id", appID(app)},
                                           {"runtimeName", anyMember(app, "runtimeName")},
                                           {"enabled", enabled},
                                           {"callable", enabled}}));
  }
  return JSONValue::object({{"apps", JSONValue::array(installed)}});
}

JSONValue connectorJSON(const JSONValue& app, const std::vector<KnownPlugin>& active, bool includesTools) {
  JSONObjectBuilder members;
  for (const char* key : {"id", "name", "description", "distributionChannel", "installUrl"}) {
    members.set(key, anyMember(app, key));
  }
  members.set("iconUrl", anyMember(app, "logoUrl")).set("iconUrlDark", anyMember(app, "logoUrlDark"));
  members.set("pluginDisplayNames", pluginsWithApp(active, appID(app)));
  if (includesTools) members.set("toolSummaries", anyMember(app, "tools"));
  return members.build();
}

JSONValue readApps(Catalogue& catalogue, const RequestParams& params) {
  const std::vector<std::string> ids = params.texts("appIds");
  const bool includesTools = params.flag("includeTools");
  if (const auto thread = params.textIfGiven("threadId")) catalogue.settings().requireThread(*thread);
  const std::vector<KnownPlugin> active = activePlugins(catalogue.view());
  const std::vector<JSONValue> known = elementsOf(appDescriptions());
  std::vector<JSONValue> apps;
  std::vector<JSONValue> missing;
  for (const std::string& id : ids) {
    const std::size_t before = apps.size();
    for (const JSONValue& app : known) {
      if (appID(app) == id) apps.push_back(connectorJSON(app, active, includesTools));
    }
    if (apps.size() == before) missing.emplace_back(id);
  }
  return JSONValue::object({{"apps", JSONValue::array(apps)}, {"missingAppIds", JSONValue::array(missing)}});
}

constexpr auto appRows = std::to_array<CatalogueRequest>({
    {"app/list", listApps},
    {"app/installed", listInstalledApps},
    {"app/read", readApps},
});

}  // namespace

std::vector<JSONValue> appInfos(const CatalogueView& view) {
  const std::vector<KnownPlugin> active = activePlugins(view);
  std::vector<JSONValue> infos;
  for (const JSONValue& app : elementsOf(appDescriptions())) {
    JSONObjectBuilder members;
    for (const char* key : toldOfApp) members.set(key, anyMember(app, key));
    members.set("isAccessible", flagMember(app, "connected")).set("isEnabled", isAppEnabled(view, appID(app)));
    infos.push_back(members.set("pluginDisplayNames", pluginsWithApp(active, appID(app))).build());
  }
  return infos;
}

JSONValue appSummary(const std::string& id) {
  for (const JSONValue& app : elementsOf(appDescriptions())) {
    if (appID(app) != id) continue;
    return JSONValue::object({{"id", id},
                              {"name", anyMember(app, "name")},
                              {"description", anyMember(app, "description")},
                              {"installUrl", anyMember(app, "installUrl")},
                              {"needsAuth", !flagMember(app, "connected")}});
  }
  return JSONValue::object({{"id", id}, {"name", id}});
}

CatalogueRequests appRequests() { return appRows; }

}  // namespace ormel::simulator
