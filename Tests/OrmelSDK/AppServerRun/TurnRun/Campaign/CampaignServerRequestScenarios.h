#pragma once

#include <vector>

#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignScenarios.h"

namespace ormel::testing {

/// Scenarios of a server that asks the application.
const std::vector<CampaignScenario>& serverRequestScenarios();

}  // namespace ormel::testing
