#include <array>

#include "ormel-simulator/Catalogue/CataloguePage.h"
#include "ormel-simulator/Catalogue/Configuration.h"
#include "ormel-simulator/Catalogue/Families.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

struct FeatureRow {
  const char* name;
  const char* stage;
  const char* displayName;
  const char* description;
  const char* announcement;
  bool isEnabled;
};

constexpr auto features = std::to_array<FeatureRow>({
    {"goals", "beta", "Goals", "A thread has a goal, and the agent keeps to it", "Threads can have goals now.", false},
    {"night_shift", "beta", "Night shift", "The agent goes on while you sleep", nullptr, false},
    {"weather_hints", "underDevelopment", nullptr, nullptr, nullptr, false},
    {"shared_sheds", "stable", "Shared sheds", "Tools that a workspace shares", nullptr, true},
    {"seed_drawer", "deprecated", "Seed drawer", "The old place for snippets", nullptr, true},
});

JSONValue textOrNothing(const char* text) { return text ? JSONValue(text) : JSONValue(); }

bool isFeatureEnabled(const CatalogueView& view, const FeatureRow& feature) {
  return valueAt(view.config, KeyPath{"features", feature.name}).boolValue().value_or(feature.isEnabled);
}

JSONValue featureJSON(const CatalogueView& view, const FeatureRow& feature) {
  return JSONValue::object({{"name", feature.name},
                            {"stage", feature.stage},
                            {"displayName", textOrNothing(feature.displayName)},
                            {"description", textOrNothing(feature.description)},
                            {"announcement", textOrNothing(feature.announcement)},
                            {"enabled", isFeatureEnabled(view, feature)},
                            {"defaultEnabled", feature.isEnabled}});
}

JSONValue listFeatures(Catalogue& catalogue, const RequestParams& params) {
  if (const auto thread = params.textIfGiven("threadId")) catalogue.settings().requireThread(*thread);
  const CatalogueView view = catalogue.view();
  std::vector<JSONValue> listed;
  for (const FeatureRow& feature : features) listed.push_back(featureJSON(view, feature));
  return pageOfListing("experimentalFeature/list", listed, "name", params);
}

const FeatureRow& knownFeature(const std::string& name) {
  for (const FeatureRow& feature : features) {
    if (name == feature.name) return feature;
  }
  throw Refusal(invalidParams, "there is no experimental feature " + name);
}

JSONValue setEnablement(Catalogue& catalogue, const RequestParams& params) {
  std::vector<ConfigEdit> edits;
  for (const auto& [name, enabled] : params.flagsByName("enablement")) {
    edits.push_back({{"features", knownFeature(name).name}, enabled});
  }
  if (!edits.empty()) catalogue.state().change([&](CatalogueDocument& state) { editConfig(state, edits); });
  const CatalogueView view = catalogue.view();
  JSONObjectBuilder enablement;
  for (const ConfigEdit& edit : edits) {
    enablement.set(edit.path.back(), isFeatureEnabled(view, knownFeature(edit.path.back())));
  }
  return JSONValue::object({{"enablement", enablement.build()}});
}

constexpr auto featureRows = std::to_array<CatalogueRequest>({
    {"experimentalFeature/list", listFeatures},
    {"experimentalFeature/enablement/set", setEnablement},
});

}  // namespace

CatalogueRequests featureRequests() { return featureRows; }

}  // namespace ormel::simulator
