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
      serverRequestDispatcher_({life_, closing_, configuration_.threadOptions, transport_, stream_, scope_, items_,
                                serverRequests_, lifecycle_, problems_}),
      notificationContext_{stream_, scope_, turn_, items_, serverRequests_, problems_} {}

FailureCauses AppServerTurnRun::causes() const {
  return {configuration_.executablePath, configuration_.ormelPathDirectories, configuration_.ormelOptions};
}

Task<std::uint64_t> AppServerTurnRun::reserveOperation() { return reserveOn(shared_from_this()); }

Task<std::uint64_t> AppServerTurnRun::reserveOn(Self self) {
  co_await self->strand().enter();
  self->closing_.requireOpen();
  co_return self->lifecycle_.reserve();
}

Task<void> AppServerTurnRun::release() { return releaseOn(shared_from_this()); }

Task<void> AppServerTurnRun::releaseOn(Self self) {
  co_await self->strand().enter();
  self->lifecycle_.finishCurrent(StreamCompletion::finished());
  self->lifecycle_.shutdownProcess();
}

Task<void> AppServerTurnRun::close() { return closeOn(shared_from_this()); }

Task<void> AppServerTurnRun::closeOn(Self self) {
  co_await self->strand().enter();
  RunClosing& closing = self->closing_;
  if (closing.stage() == RunClosing::Stage::closed) co_return;
  const OneShot<void> closed("close");
  closing.tell(closed.resolver());
  if (closing.stage() == RunClosing::Stage::open) {
    closing.begin();
    // A caller that is cancelled gives up its own wait only.
    endProcess(self).withStopToken({}).detach();
  }
  co_await closed.wait();
}

Task<void> AppServerTurnRun::endProcess(Self self) {
  const std::shared_ptr<ServerConnection> connection = self->transport_.takeConnection();
  const bool isBusy = self->stream_.currentOperationGeneration() && self->stream_.isPending();
  self->lifecycle_.finishCurrent(isBusy ? StreamCompletion::aborted() : StreamCompletion::finished());
  self->lifecycle_.shutdownProcess();
  if (connection) {
    const auto processEnd = self->closing_.processEnd();
    connection->end();
    auto kill = [connection] { connection->kill(); };
    const Timer grace = self->strand().postAfter(self->configuration_.durations.processEndGraceNanoseconds,
                                                 std::move(kill), "process end grace");
    co_await processEnd->wait();
  }
  self->closing_.complete();
}

Task<void> AppServerTurnRun::interruptWhenDue(std::uint64_t operationGeneration,
                                              std::shared_ptr<std::atomic<bool>> isDue) {
  return interruptWhenDueOn(shared_from_this(), operationGeneration, std::move(isDue));
}

Task<void> AppServerTurnRun::interruptWhenDueOn(Self self, std::uint64_t operationGeneration,
                                                std::shared_ptr<std::atomic<bool>> isDue) {
  co_await self->strand().enter();
  if (!self->stream_.isCurrent(operationGeneration)) co_return;
  isDue->store(true);
  co_await self->interruptFromSignal(operationGeneration);
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
