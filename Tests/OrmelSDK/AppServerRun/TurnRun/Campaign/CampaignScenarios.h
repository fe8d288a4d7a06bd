#pragma once

#include <functional>
#include <string>
#include <vector>

#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignWorld.h"

namespace ormel::testing {

/// A conversation with everything that may befall it left to the seed.
struct CampaignScenario {
  std::string name;
  /// Plays it to its end and checks how it went. Throws `BrokenPromise` or `SimulationError`.
  std::function<void(CampaignWorld&)> play;
};

/// Traffic that may be in the air around any conversation, and changes nothing in how it goes; before
/// `CampaignWorld::open`.
void addTraffic(CampaignWorld& world);

const std::vector<CampaignScenario>& campaignScenarios();

}  // namespace ormel::testing
