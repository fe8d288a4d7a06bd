#pragma once

#include "ormel-simulator/Catalogue/Catalogue.h"

namespace ormel::simulator {

// The requests of the catalogue, family by family. Each list lives for ever.
CatalogueRequests accountRequests();
CatalogueRequests rateLimitRequests();
CatalogueRequests accountNewsRequests();
CatalogueRequests deviceKeyRequests();
CatalogueRequests configRequests();
CatalogueRequests modelRequests();
CatalogueRequests featureRequests();
CatalogueRequests skillRequests();
CatalogueRequests hookRequests();
CatalogueRequests pluginRequests();
CatalogueRequests pluginShareRequests();
CatalogueRequests marketplaceRequests();
CatalogueRequests appRequests();
CatalogueRequests mcpServerRequests();
CatalogueRequests externalAgentRequests();
CatalogueRequests surroundingsRequests();

}  // namespace ormel::simulator
