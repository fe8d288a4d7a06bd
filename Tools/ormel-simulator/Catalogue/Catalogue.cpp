#include "ormel-simulator/Catalogue/Catalogue.h"

#include <utility>

#include "ormel-simulator/Catalogue/Configuration.h"
#include "ormel-simulator/Catalogue/Families.h"

namespace ormel::simulator {

Catalogue::Catalogue(AgentClient& client, LaterSteps& later, CatalogueSettings settings)
    : client_(client), later_(later), settings_(std::move(settings)), state_(settings_.folder) {}

void Catalogue::addRequests(RequestTable& table) {
  for (const auto family :
       {accountRequests, rateLimitRequests, accountNewsRequests, deviceKeyRequests, configRequests, modelRequests,
        featureRequests, skillRequests, hookRequests, pluginRequests, pluginShareRequests, marketplaceRequests,
        appRequests, mcpServerRequests, externalAgentRequests, surroundingsRequests}) {
    for (const CatalogueRequest& request : family()) {
      table[request.method] = [this, answer = request.answer](const JSONValue& params) {
        return answer(*this, RequestParams(params));
      };
    }
  }
}

CatalogueView Catalogue::view() const {
  CatalogueDocument document = state_.read();
  JSONValue config = effectiveConfig(document, settings_.configOverrides);
  return {std::move(document), std::move(config)};
}

}  // namespace ormel::simulator
