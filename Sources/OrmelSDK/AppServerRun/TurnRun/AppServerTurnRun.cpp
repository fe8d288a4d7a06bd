#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun.h"

#include <utility>

namespace ormel::detail {

std::shared_ptr<AppServerTurnRun> AppServerTurnRun::create(AppServerTurnRunConfiguration configuration,
                                                           ServerServices services) {
  const auto run = std::shared_ptr<AppServerTurnRun>(new AppServerTurnRun(std::move(configuration), services));
  run->life_.begin(run);
  return run;
}

AppServerTurnRun::AppServerTurnRun(AppServerTurnRunConfiguration configuration, ServerServices services)
    : configuration_(std::move(configuration)),
      services_(services),
      life_(*services.scheduler),
      problems_(configuration_.ormelOptions.problemHandler, services.scheduler->applicationScheduler()),
      lifecycle_({transport_, requests_, stream_, scope_, recovery_, items_, serverRequests_}),
      sender_({life_, configuration_.durations.requestTimeoutNanoseconds, transport_, requests_, stream_, lifecycle_,
               causes()}),
      turn_({stream_, scope_, items_, recovery_, lifecycle_}),
      recovery_({life_, configuration_.durations, stream_, scope_, serverRequests_, sender_, turn_, lifecycle_}),
      serverRequestDispatcher_({life_, configuration_.threadOptions, transport_, stream_, scope_, items_,
                                serverRequests_, lifecycle_, problems_}),
      notificationContext_{stream_, scope_, turn_, items_, serverRequests_, problems_} {}

FailureCauses AppServerTurnRun::causes() const {
  return {configuration_.executablePath, configuration_.ormelPathDirectories, configuration_.ormelOptions};
}

Task<std::uint64_t> AppServerTurnRun::reserveOperation() { return reserveOn(shared_from_this()); }

Task<std::uint64_t> AppServerTurnRun::reserveOn(Self self) {
  co_await self->strand().enter();
  co_return self->lifecycle_.reserve();
}

Task<void> AppServerTurnRun::release() { return releaseOn(shared_from_this()); }

Task<void> AppServerTurnRun::releaseOn(Self self) {
  co_await self->strand().enter();
  self->lifecycle_.finishCurrent(StreamCompletion::finished());
  self->lifecycle_.shutdownProcess();
}

Task<void> AppServerTurnRun::submitUserInput(std::string itemID,
                                             std::map<std::string, std::vector<std::string>> answers,
                                             std::optional<std::uint64_t> expectedOperationGeneration) {
  return serverRequestDispatcher_.submitUserInput(std::move(itemID), std::move(answers), expectedOperationGeneration);
}

Task<void> AppServerTurnRun::interruptFromSignal(std::optional<std::uint64_t> expectedOperationGeneration) {
  return recovery_.interruptFromSignal(expectedOperationGeneration);
}

}  // namespace ormel::detail
