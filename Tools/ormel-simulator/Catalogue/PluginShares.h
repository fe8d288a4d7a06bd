#pragma once

#include <vector>

#include "ormel-simulator/Catalogue/Catalogue.h"

namespace ormel::simulator {

inline constexpr const char* sharedMarketplaceName = "shared";

/// The plugins that were shared, as rows of the plugin data, in the order of their ids.
std::vector<JSONValue> sharedPlugins(const CatalogueDocument& state);

}  // namespace ormel::simulator
