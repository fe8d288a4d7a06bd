#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <iostream>
#include <string>

#include "OrmelSDK/AppServerRun/TurnRun/Campaign/Campaign.h"

namespace ormel::testing {
namespace {

class TurnRunCampaign : public ::testing::TestWithParam<CampaignScenario> {
 protected:
  void play(SeedRange seeds) {
    // Before they are played: a schedule that never ends should be found again.
    std::cout << GetParam().name << ": " << seeds.count << " seeds from " << seeds.first << std::endl;
    const auto begin = std::chrono::steady_clock::now();
    std::uint64_t steps = 0;
    for (std::uint64_t index = 0; index < seeds.count; ++index) {
      const auto result = playSchedule(GetParam(), seeds.first + index);
      ASSERT_FALSE(result.failure) << "schedule " << index + 1 << ": " << *result.failure;
      steps += result.steps;
    }
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    std::cout << GetParam().name << ": " << steps << " steps, " << taken.count() << " s\n";
  }
};

TEST_P(TurnRunCampaign, KeepsItsPromisesUnderAFixedSetOfSeeds) { play(campaignSeeds().fixed); }

TEST_P(TurnRunCampaign, KeepsItsPromisesUnderFreshSeeds) { play(campaignSeeds().fresh); }

TEST_P(TurnRunCampaign, ReplaysASeedExactly) {
  const SeedRange seeds = campaignSeeds().repeated;
  for (std::uint64_t seed = seeds.first; seed < seeds.first + seeds.count; ++seed) {
    const auto once = playSchedule(GetParam(), seed);
    const auto again = playSchedule(GetParam(), seed);
    ASSERT_EQ(once.steps, again.steps) << "seed " << seed;
    ASSERT_EQ(once.trace, again.trace) << "seed " << seed;
  }
}

INSTANTIATE_TEST_SUITE_P(Scenarios, TurnRunCampaign, ::testing::ValuesIn(campaignScenarios()),
                         [](const auto& scenario) { return scenario.param.name; });

TEST(TurnRunCampaignDeathTest, NamesTheScheduleInWhichAStepNeverEnds) {
  const auto hang = [](CampaignWorld& world) {
    world.scheduler.post([] {
      while (true) ::pause();
    });
    world.settle();
  };
  EXPECT_EXIT(playSchedule({"Hang", hang}, 7, std::chrono::seconds(1)), ::testing::KilledBySignal(SIGALRM),
              "scenario Hang, seed 7, .*ORMEL_CAMPAIGN_SEED=7");
}

}  // namespace

void PrintTo(const CampaignScenario& scenario, std::ostream* stream) { *stream << scenario.name; }

}  // namespace ormel::testing
