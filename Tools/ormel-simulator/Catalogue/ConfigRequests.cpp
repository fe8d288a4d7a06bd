#include <array>
#include <filesystem>
#include <set>

#include "ormel-simulator/Catalogue/Configuration.h"
#include "ormel-simulator/Catalogue/Families.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

const JSONValue& configRequirements() {
  static const JSONValue value = JSONValue::decode(R"json({
  "allowedApprovalPolicies": ["untrusted", "on-request", "never"],
  "allowedApprovalsReviewers": ["user", "auto_review"],
  "allowedSandboxModes": ["read-only", "workspace-write", "danger-full-access"],
  "allowedPermissions": [":read-only", ":workspace", "careful-gardener"],
  "allowedWebSearchModes": ["disabled", "cached", "live"],
  "allowManagedHooksOnly": false,
  "computerUse": {"allowLockedComputerUse": false},
  "featureRequirements": {"goals": true},
  "enforceResidency": null,
  "network": {
    "enabled": true,
    "httpPort": 18080,
    "socksPort": 18081,
    "allowUpstreamProxy": false,
    "dangerouslyAllowNonLoopbackProxy": false,
    "dangerouslyAllowAllUnixSockets": false,
    "domains": {"seeds.parlane.example": "allow", "weeds.parlane.example": "deny"},
    "managedAllowedDomainsOnly": false,
    "allowedDomains": ["seeds.parlane.example"],
    "deniedDomains": ["weeds.parlane.example"],
    "unixSockets": {"/run/ormel/greenhouse.sock": "allow"},
    "allowUnixSockets": ["/run/ormel/greenhouse.sock"],
    "allowLocalBinding": true
  }
})json");
  return value;
}

JSONValue configFile(Catalogue& catalogue) {
  const std::filesystem::path file = catalogue.state().file();
  return file.empty() ? JSONValue() : JSONValue(file.string());
}

JSONValue layersJSON(Catalogue& catalogue, const CatalogueDocument& state) {
  std::vector<JSONValue> layers;
  for (const ConfigLayer& layer : configLayers(state, catalogue.settings().configOverrides)) {
    const bool isUsers = std::string_view(layer.type) == "user";
    JSONObjectBuilder name;
    name.set("type", layer.type);
    if (isUsers) name.set("file", configFile(catalogue));
    layers.push_back(JSONValue::object(
        {{"name", name.build()}, {"version", isUsers ? configVersion(state) : "0"}, {"config", layer.config}}));
  }
  return JSONValue::array(layers);
}

JSONValue readConfig(Catalogue& catalogue, const RequestParams& params) {
  params.textIfGiven("cwd");
  const CatalogueView view = catalogue.view();
  JSONObjectBuilder result;
  result.set("config", view.config);
  if (params.flag("includeLayers")) result.set("layers", layersJSON(catalogue, view.state));
  return result.build();
}

JSONValue readConfigRequirements(Catalogue&, const RequestParams&) {
  return JSONValue::object({{"requirements", configRequirements()}});
}

ConfigEdit editOf(const RequestParams& params) {
  ConfigEdit edit;
  edit.path = parseKeyPath(params.text("keyPath"));
  const JSONValue* value = params.json().find("value");
  if (!value) throw Refusal(invalidParams, "value must be given; null removes the key");
  edit.value = *value;
  edit.merges = params.word("mergeStrategy", {"replace", "upsert"}) == "upsert";
  return edit;
}

void checkVersion(const CatalogueDocument& state, const std::optional<std::string>& expected) {
  if (!expected || *expected == configVersion(state)) return;
  throw Refusal(invalidRequest, "the configuration has changed: expectedVersion is " + *expected +
                                    ", but its version is " + configVersion(state) + "; read it again");
}

/// The command line's value for a key that was written, with a message; null if it does not override any.
JSONValue overriddenMetadata(Catalogue& catalogue, const CatalogueDocument& state, std::span<const ConfigEdit> edits) {
  const auto& overrides = catalogue.settings().configOverrides;
  if (overrides.empty()) return {};
  const JSONValue flags = configLayers(state, overrides).back().config;
  for (const ConfigEdit& edit : edits) {
    const JSONValue effective = valueAt(flags, edit.path);
    if (effective.isNull()) continue;
    return JSONValue::object({{"message", "The command line of the server overrides it"},
                              {"overridingLayer", JSONValue::object({{"type", "sessionFlags"}})},
                              {"effectiveValue", effective}});
  }
  return {};
}

bool touches(std::span<const ConfigEdit> edits, std::initializer_list<std::string_view> tables) {
  const std::set<std::string_view> touched(tables);
  for (const ConfigEdit& edit : edits) {
    if (touched.contains(edit.path.front())) return true;
  }
  return false;
}

JSONValue writeEdits(Catalogue& catalogue, const RequestParams& params, std::span<const ConfigEdit> edits) {
  const auto file = params.textIfGiven("filePath");
  const JSONValue ownFile = configFile(catalogue);
  if (file && ownFile != JSONValue(*file)) {
    throw Refusal(invalidParams, "filePath must be the file of the user's configuration, or left out: " +
                                     textMember(JSONValue::object({{"file", ownFile}}), "file").value_or("none"));
  }
  const auto expected = params.textIfGiven("expectedVersion");
  const CatalogueDocument state = catalogue.state().change([&](CatalogueDocument& newest) {
    checkVersion(newest, expected);
    editConfig(newest, edits);
  });
  if (touches(edits, {"skills", "plugins"})) catalogue.client().notify("skills/changed", JSONValue::object());
  const JSONValue overridden = overriddenMetadata(catalogue, state, edits);
  return JSONValue::object({{"status", overridden.isNull() ? "ok" : "okOverridden"},
                            {"version", configVersion(state)},
                            {"filePath", ownFile},
                            {"overriddenMetadata", overridden}});
}

JSONValue writeConfigValue(Catalogue& catalogue, const RequestParams& params) {
  const ConfigEdit edits[] = {editOf(params)};
  return writeEdits(catalogue, params, edits);
}

JSONValue batchWriteConfig(Catalogue& catalogue, const RequestParams& params) {
  params.flag("reloadUserConfig");
  std::vector<ConfigEdit> edits;
  for (const RequestParams& edit : params.objects("edits")) edits.push_back(editOf(edit));
  if (edits.empty()) throw Refusal(invalidParams, "edits must hold at least one edit");
  return writeEdits(catalogue, params, edits);
}

constexpr auto configRows = std::to_array<CatalogueRequest>({
    {"config/read", readConfig},
    {"configRequirements/read", readConfigRequirements},
    {"config/value/write", writeConfigValue},
    {"config/batchWrite", batchWriteConfig},
});

}  // namespace

CatalogueRequests configRequests() { return configRows; }

}  // namespace ormel::simulator
