#include <array>
#include <utility>

#include "ormel-simulator/Catalogue/Families.h"
#include "ormel-simulator/Catalogue/PluginCatalogue.h"
#include "ormel-simulator/Catalogue/PluginShares.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/NewID.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

Refusal nameIsTaken(const std::string& name, const std::string& plugin) {
  return Refusal(invalidRequest, "another plugin is shared by the name " + name + ": " + plugin);
}

std::string shareURL(const std::string& id) { return "https://parlane.example/plugins/" + id; }

std::string nameOfPath(const std::string& path) {
  std::string name = path;
  while (name.ends_with('/')) name.pop_back();
  name.erase(0, name.find_last_of('/') + 1);
  if (name.empty() || name.find('@') != std::string::npos) {
    throw Refusal(invalidParams, "pluginPath must end in the name of a plugin: " + path);
  }
  return name;
}

/// The targets as they were given, if they are such.
JSONValue checkedTargets(const RequestParams& params) {
  std::vector<JSONValue> targets;
  for (const RequestParams& target : params.objects("shareTargets")) {
    targets.push_back(
        JSONValue::object({{"principalType", target.word("principalType", {"user", "group", "workspace"})},
                           {"principalId", target.text("principalId")},
                           {"role", target.word("role", {"reader", "editor"})}}));
  }
  return JSONValue::array(targets);
}

/// The user who shares is the owner; the targets follow.
JSONValue principalsJSON(const JSONValue& share) {
  std::vector<JSONValue> principals = {JSONValue::object(
      {{"principalType", "user"}, {"principalId", "user-robin"}, {"role", "owner"}, {"name", "Robin"}})};
  for (const JSONValue& target : elementsOf(anyMember(share, "targets"))) {
    principals.push_back(with(target, "name", anyMember(target, "principalId")));
  }
  return JSONValue::array(principals);
}

std::string versionOf(const JSONValue& share) { return "1.0." + JSONValue(numberMember(share, "saves") - 1).encode(); }

JSONValue sharedPlugin(const std::string& id, const JSONValue& share) {
  const JSONValue context = JSONValue::object({{"remotePluginId", id},
                                               {"remoteVersion", versionOf(share)},
                                               {"discoverability", anyMember(share, "discoverability")},
                                               {"shareUrl", shareURL(id)},
                                               {"creatorAccountUserId", "user-robin"},
                                               {"creatorName", "Robin"},
                                               {"sharePrincipals", principalsJSON(share)}});
  const JSONValue summary = JSONValue::object({{"name", anyMember(share, "name")},
                                               {"remotePluginId", id},
                                               {"version", versionOf(share)},
                                               {"shareContext", context},
                                               {"source", JSONValue::object({{"type", "remote"}})},
                                               {"installPolicy", "AVAILABLE"},
                                               {"authPolicy", "ON_USE"},
                                               {"availability", "AVAILABLE"},
                                               {"keywords", JSONValue::array()}});
  return JSONValue::object({{"summary", summary}});
}

JSONValue knownShare(const CatalogueDocument& state, const std::string& id) {
  const JSONValue share = state.at({"shares", id});
  if (share.isNull()) throw Refusal(invalidParams, "no plugin is shared with the remotePluginId " + id);
  return share;
}

void requireFreeName(const CatalogueDocument& state, const std::string& id, const std::string& name) {
  for (const std::string& other : keysOf(state.at({"shares"}))) {
    if (other != id && textMember(state.at({"shares", other}), "name") == name) {
      throw nameIsTaken(name, other);
    }
  }
}

JSONValue saveShare(Catalogue& catalogue, const RequestParams& params) {
  const std::string path = params.text("pluginPath");
  const std::string name = nameOfPath(path);
  const auto known = params.textIfGiven("remotePluginId");
  const auto discoverability = params.wordIfGiven("discoverability", {"LISTED", "UNLISTED", "PRIVATE"});
  std::optional<JSONValue> targets;
  if (params.has("shareTargets")) targets = checkedTargets(params);
  const std::string id = known.value_or(newID());
  catalogue.state().change([&](CatalogueDocument& state) {
    JSONValue share = JSONValue::object({{"discoverability", "PRIVATE"}});
    if (known) share = knownShare(state, id);
    requireFreeName(state, id, name);
    share = with(with(share, "pluginPath", path), "name", name);
    share = with(share, "saves", numberMember(share, "saves") + 1);
    if (discoverability) share = with(share, "discoverability", *discoverability);
    if (targets) share = with(share, "targets", *targets);
    state.put({"shares", id}, share);
  });
  return JSONValue::object({{"remotePluginId", id}, {"shareUrl", shareURL(id)}});
}

JSONValue updateTargets(Catalogue& catalogue, const RequestParams& params) {
  const std::string id = params.text("remotePluginId");
  const std::string discoverability = params.word("discoverability", {"UNLISTED", "PRIVATE"});
  const JSONValue targets = checkedTargets(params);
  const CatalogueDocument state = catalogue.state().change([&](CatalogueDocument& newest) {
    const JSONValue share = knownShare(newest, id);
    newest.put({"shares", id}, with(with(share, "targets", targets), "discoverability", discoverability));
  });
  return JSONValue::object(
      {{"principals", principalsJSON(state.at({"shares", id}))}, {"discoverability", discoverability}});
}

JSONValue listShares(Catalogue& catalogue, const RequestParams&) {
  std::vector<JSONValue> items;
  for (const KnownMarketplace& marketplace : knownMarketplaces(catalogue.view())) {
    if (marketplace.name != sharedMarketplaceName) continue;
    for (const KnownPlugin& plugin : marketplace.plugins) {
      const std::string id = textMember(anyMember(plugin.data, "summary"), "remotePluginId").value_or("");
      const JSONValue share = catalogue.state().read().at({"shares", id});
      items.push_back(JSONValue::object({{"plugin", plugin.summaryJSON()},
                                         {"shareUrl", shareURL(id)},
                                         {"localPluginPath", anyMember(share, "pluginPath")}}));
    }
  }
  return JSONValue::object({{"data", JSONValue::array(items)}});
}

JSONValue checkoutShare(Catalogue& catalogue, const RequestParams& params) {
  const std::string id = params.text("remotePluginId");
  const JSONValue share = knownShare(catalogue.state().read(), id);
  const std::string name = textMember(share, "name").value_or("");
  const std::string root = marketplaceRoot(sharedMarketplaceName);
  return JSONValue::object({{"remotePluginId", id},
                            {"pluginId", name + "@" + sharedMarketplaceName},
                            {"pluginName", name},
                            {"pluginPath", root + "/" + name},
                            {"marketplaceName", sharedMarketplaceName},
                            {"marketplacePath", root + "/marketplace.json"},
                            {"remoteVersion", versionOf(share)}});
}

JSONValue deleteShare(Catalogue& catalogue, const RequestParams& params) {
  const std::string id = params.text("remotePluginId");
  catalogue.state().change([&](CatalogueDocument& state) {
    const std::string name = textMember(knownShare(state, id), "name").value_or("");
    const std::string plugin = name + "@" + sharedMarketplaceName;
    if (!state.at({"config", "values", "plugins", plugin}).isNull()) forgetInstallation(state, plugin);
    state.put({"shares", id}, {});
  });
  return JSONValue::object();
}

constexpr auto pluginShareRows = std::to_array<CatalogueRequest>({
    {"plugin/share/save", saveShare},
    {"plugin/share/updateTargets", updateTargets},
    {"plugin/share/list", listShares},
    {"plugin/share/checkout", checkoutShare},
    {"plugin/share/delete", deleteShare},
});

}  // namespace

std::vector<JSONValue> sharedPlugins(const CatalogueDocument& state) {
  std::vector<JSONValue> plugins;
  for (const std::string& id : keysOf(state.at({"shares"}))) {
    plugins.push_back(sharedPlugin(id, state.at({"shares", id})));
  }
  return plugins;
}

CatalogueRequests pluginShareRequests() { return pluginShareRows; }

}  // namespace ormel::simulator
