#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>

#include "OrmelSDK/Management/Campaign/ManagementWorld.h"

namespace ormel::testing {
namespace {

std::uint64_t numberFrom(const char* variable, std::uint64_t otherwise) {
  const char* text = std::getenv(variable);
  return text && *text ? std::strtoull(text, nullptr, 10) : otherwise;
}

/// Plays the schedules of the seeds; names the one that breaks a promise.
void play(std::uint64_t first, std::uint64_t count) {
  for (std::uint64_t seed = first; seed < first + count; ++seed) {
    ManagementWorld world(seed);
    try {
      world.play();
    } catch (const Error& error) {
      FAIL() << "schedule " << seed - first + 1 << ", to be played again by ORMEL_MANAGEMENT_SEED=" << seed
             << " ormel-sdk-tests --gtest_filter='ManagementCampaign.*Fixed*':\n"
             << error.what() << "\n"
             << world.scheduler.pending();
    }
  }
}

/// In all, unless the environment says otherwise.
constexpr std::uint64_t schedules = 4000;

std::uint64_t half() { return numberFrom("ORMEL_CAMPAIGN_SCHEDULES", schedules) / 2; }

TEST(ManagementCampaign, KeepsItsPromisesUnderAFixedSetOfSeeds) {
  const std::uint64_t only = numberFrom("ORMEL_MANAGEMENT_SEED", 0);
  play(only ? only : 1, only ? 1 : half());
}

TEST(ManagementCampaign, KeepsItsPromisesUnderFreshSeeds) {
  const std::uint64_t base = numberFrom("ORMEL_CAMPAIGN_BASE", std::random_device()());
  RecordProperty("base", std::to_string(base));
  play(base, half());
}

}  // namespace
}  // namespace ormel::testing
