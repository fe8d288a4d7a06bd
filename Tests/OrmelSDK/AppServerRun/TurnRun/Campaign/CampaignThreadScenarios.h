#pragma once

#include <vector>

#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignScenarios.h"

namespace ormel::testing {

/// The scenarios that go by a `Thread`.
std::vector<CampaignScenario> campaignThreadScenarios();

}  // namespace ormel::testing
