#include "OrmelSDK/AppServerRun/TurnRun/Campaign/Campaign.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <random>

namespace ormel::testing {

namespace {

/// More than these need not be the same each time.
constexpr std::uint64_t mostFixedSchedules = 100'000;

std::optional<std::uint64_t> numberInEnvironment(const char* name) {
  const char* text = std::getenv(name);
  if (!text || !*text) return std::nullopt;
  return std::strtoull(text, nullptr, 10);
}

std::string describe(const CampaignScenario& scenario, std::uint64_t seed) {
  const std::string number = std::to_string(seed);
  return "scenario " + scenario.name + ", seed " + number + ", to be played again by ORMEL_CAMPAIGN_SEED=" + number +
         " turn-run-campaign-tests --gtest_filter='*TurnRunCampaign*FixedSet*/" + scenario.name + "'";
}

std::string scheduleUnderWay;

extern "C" void tellScheduleUnderWay(int signal) {
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, scheduleUnderWay.data(), scheduleUnderWay.size());
  ::signal(signal, SIG_DFL);
  ::raise(signal);
}

/// Makes an end of the process name the schedule too: an abort, or a step that never ends.
class ScheduleUnderWay {
 public:
  ScheduleUnderWay(const CampaignScenario& scenario, std::uint64_t seed, std::chrono::seconds patience) {
    scheduleUnderWay = "\n" + describe(scenario, seed) + "\n";
    [[maybe_unused]] static const auto onAbort = ::signal(SIGABRT, tellScheduleUnderWay);
    [[maybe_unused]] static const auto onAlarm = ::signal(SIGALRM, tellScheduleUnderWay);
    ::alarm(static_cast<unsigned>(patience.count()));
  }
  ScheduleUnderWay(const ScheduleUnderWay&) = delete;
  ScheduleUnderWay& operator=(const ScheduleUnderWay&) = delete;
  ~ScheduleUnderWay() { ::alarm(0); }
};

}  // namespace

ScheduleResult playSchedule(const CampaignScenario& scenario, std::uint64_t seed, std::chrono::seconds patience) {
  const ScheduleUnderWay underWay(scenario, seed, patience);
  ScheduleResult result;
  CampaignWorld world(seed);
  try {
    scenario.play(world);
  } catch (const Error& error) {
    result.failure = describe(scenario, seed) + ":\n" + error.what() + "\n" + world.scheduler.pending();
  }
  result.trace = world.trace();
  result.steps = world.scheduler.steps();
  return result;
}

CampaignSeeds campaignSeeds() {
  if (const auto only = numberInEnvironment("ORMEL_CAMPAIGN_SEED")) return {{*only, 1}, {}, {*only, 1}};
  const std::uint64_t total = numberInEnvironment("ORMEL_CAMPAIGN_SCHEDULES").value_or(ORMEL_CAMPAIGN_SCHEDULES);
  const std::uint64_t scenarios = campaignScenarios().size();
  const std::uint64_t fixed = std::min(total / 2, mostFixedSchedules);
  const auto each = [scenarios](std::uint64_t count) {
    return std::max<std::uint64_t>((count + scenarios - 1) / scenarios, 1);
  };
  const std::uint64_t base = numberInEnvironment("ORMEL_CAMPAIGN_BASE").value_or(std::random_device()());
  return {{1, each(fixed)}, {base, each(total - fixed)}, {1, each(fixed / 50)}};
}

}  // namespace ormel::testing
