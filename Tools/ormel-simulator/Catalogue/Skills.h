#pragma once

#include <vector>

#include "ormel-simulator/Catalogue/PluginCatalogue.h"

namespace ormel::simulator {

/// The skills of one plugin, as they are listed.
std::vector<JSONValue> skillsOfPlugin(const CatalogueView& view, const KnownPlugin& plugin);

}  // namespace ormel::simulator
