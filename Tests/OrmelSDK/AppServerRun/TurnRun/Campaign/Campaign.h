#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignScenarios.h"

namespace ormel::testing {

/// How one schedule went.
struct ScheduleResult {
  /// Names the scenario, the seed, and the way to play it again.
  std::optional<std::string> failure;
  std::uint64_t trace = 0;
  std::uint64_t steps = 0;
};

/// One that takes longer than `patience`, which is many times what any needs, hangs: then this process ends by SIGALRM,
/// with the scenario and the seed on standard error.
ScheduleResult playSchedule(const CampaignScenario& scenario, std::uint64_t seed,
                            std::chrono::seconds patience = std::chrono::seconds(60));

/// Seeds that follow each other.
struct SeedRange {
  std::uint64_t first = 0;
  std::uint64_t count = 0;
};

/// The seeds of one scenario. The environment may ask for other numbers:
///
/// | variable                   | what it sets                                          |
/// |----------------------------|-------------------------------------------------------|
/// | `ORMEL_CAMPAIGN_SCHEDULES` | schedules of the whole campaign                       |
/// | `ORMEL_CAMPAIGN_BASE`      | the first of the fresh seeds, otherwise a random one  |
/// | `ORMEL_CAMPAIGN_SEED`      | the only seed to play                                 |
struct CampaignSeeds {
  SeedRange fixed;
  SeedRange fresh;
  /// Played twice each.
  SeedRange repeated;
};

CampaignSeeds campaignSeeds();

}  // namespace ormel::testing
