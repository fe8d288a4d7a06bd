#pragma once

#include <vector>

#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignScenarios.h"

namespace ormel::testing {

/// Scenarios whose clients act in the very moment in which something else happens.
std::vector<CampaignScenario> raceScenarios();

}  // namespace ormel::testing
