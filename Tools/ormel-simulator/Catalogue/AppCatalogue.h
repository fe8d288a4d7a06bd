#pragma once

#include <string>
#include <vector>

#include "ormel-simulator/Catalogue/Catalogue.h"

namespace ormel::simulator {

/// All apps as they are listed.
std::vector<JSONValue> appInfos(const CatalogueView& view);

/// An app as a plugin names it.
JSONValue appSummary(const std::string& id);

}  // namespace ormel::simulator
