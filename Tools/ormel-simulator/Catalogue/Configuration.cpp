#include "ormel-simulator/Catalogue/Configuration.h"

#include <cmath>

#include "OrmelSDK/Base/Error.h"
#include "ormel-simulator/Catalogue/ConfigRules.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

const JSONValue& configDefaults() {
  static const JSONValue value = JSONValue::decode(R"json({
  "model": "simulated",
  "model_provider": "simulator",
  "model_reasoning_effort": "medium",
  "approval_policy": "on-request",
  "sandbox_mode": "workspace-write",
  "web_search": "cached",
  "apps": {"_default": {"enabled": true}},
  "skills": {"config": []}
})json");
  return value;
}

[[noreturn]] void refuseKeyPath(const std::string& text) {
  throw Refusal(invalidParams, "keyPath must be keys with dots between them, and not: " + text);
}

/// Takes one key from the front; `rest` is left at the dot behind it, or empty.
std::string takeKey(std::string_view& rest, const std::string& text) {
  const bool quoted = rest.starts_with('"');
  if (quoted) rest.remove_prefix(1);
  const std::size_t end = rest.find(quoted ? '"' : '.');
  if (quoted && end == std::string_view::npos) refuseKeyPath(text);
  std::string key(rest.substr(0, end));
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + (quoted ? 1 : 0));
  if (key.empty() || (!rest.empty() && rest.front() != '.')) refuseKeyPath(text);
  return key;
}

JSONValue overrideValue(const std::string& text) {
  try {
    return JSONValue::decode(text);
  } catch (const Error&) {
    return text;
  }
}

/// An override that makes no sense is left out: it concerns the whole server, and must not fail each request.
JSONValue overridesConfig(std::span<const std::string> overrides) {
  JSONValue config = JSONValue::object();
  for (const std::string& pair : overrides) {
    const std::size_t sign = pair.find('=');
    if (sign == std::string::npos) continue;
    try {
      const KeyPath path = parseKeyPath(pair.substr(0, sign));
      const JSONValue changed = withValueAt(config, path, overrideValue(pair.substr(sign + 1)));
      checkConfig(changed);
      config = changed;
    } catch (const Refusal&) {
      continue;
    }
  }
  return config;
}

/// Entries that say nothing about it are enabled.
JSONValue withEntriesEnabled(const JSONValue& config, const std::string& table) {
  JSONValue result = config;
  for (const std::string& key : keysOf(anyMember(config, table))) {
    const KeyPath path = {table, key, "enabled"};
    if (valueAt(result, path).isNull()) result = withValueAt(result, path, true);
  }
  return result;
}

}  // namespace

KeyPath parseKeyPath(const std::string& text) {
  KeyPath path;
  std::string_view rest = text;
  path.push_back(takeKey(rest, text));
  while (!rest.empty()) {
    rest.remove_prefix(1);
    path.push_back(takeKey(rest, text));
  }
  return path;
}

std::vector<ConfigLayer> configLayers(const CatalogueDocument& state, std::span<const std::string> overrides) {
  std::vector<ConfigLayer> layers;
  layers.push_back({"system", configDefaults()});
  const JSONValue user = state.at({"config", "values"});
  layers.push_back({"user", user.objectValue() ? user : JSONValue::object()});
  if (!overrides.empty()) layers.push_back({"sessionFlags", overridesConfig(overrides)});
  return layers;
}

JSONValue effectiveConfig(const CatalogueDocument& state, std::span<const std::string> overrides) {
  JSONValue config = JSONValue::object();
  for (const ConfigLayer& layer : configLayers(state, overrides)) config = merged(config, layer.config);
  return withEntriesEnabled(withEntriesEnabled(config, "plugins"), "apps");
}

std::string configVersion(const CatalogueDocument& state) {
  const double version = state.at({"config", "version"}).numberValue().value_or(0);
  return JSONValue(std::trunc(version)).encode();
}

void editConfig(CatalogueDocument& state, std::span<const ConfigEdit> edits) {
  JSONValue values = state.at({"config", "values"});
  if (!values.objectValue()) values = JSONValue::object();
  for (const ConfigEdit& edit : edits) {
    const JSONValue value = edit.merges ? merged(valueAt(values, edit.path), edit.value) : edit.value;
    values = withValueAt(values, edit.path, value);
  }
  checkConfig(values);
  state.put({"config", "values"}, values);
  state.put({"config", "version"}, state.at({"config", "version"}).numberValue().value_or(0) + 1);
}

void setConfig(CatalogueDocument& state, const KeyPath& path, const JSONValue& value) {
  const ConfigEdit edits[] = {{path, value}};
  editConfig(state, edits);
}

}  // namespace ormel::simulator
