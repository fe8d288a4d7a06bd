#include <algorithm>
#include <array>
#include <cctype>

#include "ormel-simulator/Catalogue/Families.h"
#include "ormel-simulator/Catalogue/PluginCatalogue.h"
#include "ormel-simulator/Catalogue/PluginShares.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

/// A source names its marketplace by its last part, as a repository does.
std::string nameOfSource(const std::string& source) {
  std::string name = source;
  while (name.ends_with('/')) name.pop_back();
  name.erase(0, name.find_last_of("/:") + 1);
  if (name.ends_with(".git")) name.resize(name.size() - std::string_view(".git").size());
  const bool fits = !name.empty() && std::all_of(name.begin(), name.end(), [](unsigned char byte) {
    return std::isalnum(byte) != 0 || byte == '-' || byte == '_';
  });
  if (!fits) throw Refusal(invalidParams, "source must end in the name of a marketplace: " + source);
  return name;
}

bool isTaken(const CatalogueView& view, const std::string& name) {
  if (name == sharedMarketplaceName) return true;
  for (const KnownMarketplace& marketplace : knownMarketplaces(view)) {
    if (marketplace.name == name) return true;
  }
  return false;
}

JSONValue addMarketplace(Catalogue& catalogue, const RequestParams& params) {
  const std::string source = params.text("source");
  const auto ref = params.textIfGiven("refName");
  const auto paths = params.textsIfGiven("sparsePaths");
  const std::string name = nameOfSource(source);
  const CatalogueView view = catalogue.view();
  const bool alreadyAdded = textMember(view.state.at({"marketplaces", name}), "source") == source;
  if (!alreadyAdded && isTaken(view, name)) {
    throw Refusal(invalidRequest, "there is a marketplace " + name + " from another source");
  }
  JSONObjectBuilder members;
  members.set("source", source).set("refName", ref);
  if (paths) members.set("sparsePaths", textsJSON(*paths));
  catalogue.state().change([&](CatalogueDocument& state) { state.put({"marketplaces", name}, members.build()); });
  return JSONValue::object(
      {{"marketplaceName", name}, {"installedRoot", marketplaceRoot(name)}, {"alreadyAdded", alreadyAdded}});
}

void requireAdded(const CatalogueDocument& state, const std::string& name) {
  if (!state.at({"marketplaces", name}).isNull()) return;
  throw Refusal(invalidParams, "no marketplace " + name + " was added");
}

JSONValue removeMarketplace(Catalogue& catalogue, const RequestParams& params) {
  const std::string name = params.text("marketplaceName");
  catalogue.state().change([&](CatalogueDocument& state) {
    requireAdded(state, name);
    for (const std::string& plugin : keysOf(state.at({"config", "values", "plugins"}))) {
      if (plugin.ends_with("@" + name)) forgetInstallation(state, plugin);
    }
    state.put({"marketplaces", name}, {});
  });
  return JSONValue::object({{"marketplaceName", name}, {"installedRoot", marketplaceRoot(name)}});
}

JSONValue upgradeMarketplaces(Catalogue& catalogue, const RequestParams& params) {
  const auto wanted = params.textIfGiven("marketplaceName");
  const CatalogueDocument state = catalogue.state().read();
  if (wanted) requireAdded(state, *wanted);
  std::vector<JSONValue> selected;
  std::vector<JSONValue> roots;
  std::vector<JSONValue> errors;
  for (const std::string& name : keysOf(state.at({"marketplaces"}))) {
    if (wanted && name != *wanted) continue;
    selected.emplace_back(name);
    const std::string source = textMember(state.at({"marketplaces", name}), "source").value_or("");
    if (isBrokenSource(source)) {
      errors.push_back(JSONValue::object({{"marketplaceName", name}, {"message", "cannot be read from " + source}}));
    } else {
      roots.emplace_back(marketplaceRoot(name));
    }
  }
  return JSONValue::object({{"selectedMarketplaces", JSONValue::array(selected)},
                            {"upgradedRoots", JSONValue::array(roots)},
                            {"errors", JSONValue::array(errors)}});
}

constexpr auto marketplaceRows = std::to_array<CatalogueRequest>({
    {"marketplace/add", addMarketplace},
    {"marketplace/remove", removeMarketplace},
    {"marketplace/upgrade", upgradeMarketplaces},
});

}  // namespace

CatalogueRequests marketplaceRequests() { return marketplaceRows; }

}  // namespace ormel::simulator
