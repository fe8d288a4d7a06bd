#pragma once

#include <span>
#include <string>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-simulator/Catalogue/CatalogueState.h"

namespace ormel::simulator {

/// One change of the user's configuration.
struct ConfigEdit {
  KeyPath path;
  JSONValue value;
  /// Merge objects instead of replacing what is there.
  bool merges = false;
};

/// A key path as it is written: keys with dots between them; a key that has a dot itself stands in double quotes.
/// Fails with `Refusal`.
KeyPath parseKeyPath(const std::string& text);

struct ConfigLayer {
  const char* type;
  JSONValue config;
};

/// From the weakest to the strongest: what comes with the server, the user's own, that of the command line.
std::vector<ConfigLayer> configLayers(const CatalogueDocument& state, std::span<const std::string> overrides);

/// All layers in one.
JSONValue effectiveConfig(const CatalogueDocument& state, std::span<const std::string> overrides);

/// The version of the user's configuration, which each change of it counts up.
std::string configVersion(const CatalogueDocument& state);

/// Makes all changes, or none and fails with `Refusal`, if the result would not be a configuration.
void editConfig(CatalogueDocument& state, std::span<const ConfigEdit> edits);

/// Makes one change that replaces what was there; null removes it.
void setConfig(CatalogueDocument& state, const KeyPath& path, const JSONValue& value);

}  // namespace ormel::simulator
