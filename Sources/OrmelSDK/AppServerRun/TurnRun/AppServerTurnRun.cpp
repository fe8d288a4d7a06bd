#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun.h"

#include <utility>

#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Platform/SystemProcessLauncher.h"

namespace ormel::detail {

RunServices::RunServices()
    : RunServices(productionScheduler(), SystemProcessLauncher::shared(), BlockingWork::onThreads()) {}

std::shared_ptr<AppServerTurnRun> AppServerTurnRun::create(AppServerTurnRunConfiguration configuration,
                                                           RunServices services) {
  return std::shared_ptr<AppServerTurnRun>(new AppServerTurnRun(std::move(configuration), services));
}

AppServerTurnRun::AppServerTurnRun(AppServerTurnRunConfiguration configuration, RunServices services)
    : configuration_(std::move(configuration)), services_(services), strand_(*services.scheduler, "run") {}

AppServerTurnRun::~AppServerTurnRun() = default;

Task<std::uint64_t> AppServerTurnRun::reserveOperation() { return reserveOn(shared_from_this()); }

Task<std::uint64_t> AppServerTurnRun::reserveOn(Self self) {
  co_await self->strand_.enter();
  co_return self->reserve();
}

Task<void> AppServerTurnRun::release() { return releaseOn(shared_from_this()); }

Task<void> AppServerTurnRun::releaseOn(Self self) {
  co_await self->strand_.enter();
  self->finishCurrent(StreamCompletion::finished());
  self->shutdownProcess();
}

std::uint64_t AppServerTurnRun::reserve() {
  stream_.requireNoOperation();
  prepareForNextTurn();
  return stream_.begin();
}

std::uint64_t AppServerTurnRun::admit(std::optional<std::uint64_t> preparedOperationGeneration) {
  if (!preparedOperationGeneration) return reserve();
  stream_.requireCurrent(*preparedOperationGeneration);
  return *preparedOperationGeneration;
}

void AppServerTurnRun::prepareForNextTurn() {
  recovery_.cancel();
  stream_.reset();
  items_.clear();
  serverRequests_.clearUserInput();
  serverRequests_.cancelAll();
  scope_.clearActiveTurn();
  scope_.resetCoordinatorIdentity();
  abortedByClient_ = false;
}

void AppServerTurnRun::finishStreamState(const StreamCompletion& completion,
                                         std::optional<std::uint64_t> finishedOperationGeneration) {
  if (!stream_.isPending()) return;
  recovery_.cancel();
  stream_.close(completion, finishedOperationGeneration);
  scope_.dropDeferred();
  stream_.endChannel();
  requests_.release(completion);
  scope_.clearActiveTurn();
  serverRequests_.clearUserInput();
  serverRequests_.cancelAll();
  if (completion.kind() == StreamCompletion::Kind::failed) shutdownProcess();
}

void AppServerTurnRun::finishCurrent(const StreamCompletion& completion) {
  finishStreamState(completion, stream_.currentOperationGeneration());
}

void AppServerTurnRun::finishIfCurrent(std::uint64_t operationGeneration, const StreamCompletion& completion) {
  if (stream_.isCurrent(operationGeneration)) finishStreamState(completion, operationGeneration);
}

void AppServerTurnRun::shutdownProcess() {
  recovery_.cancel();
  serverRequests_.cancelAll();
  transport_.shutdown();
  scope_.clearActive();
  scope_.resetCoordinatorIdentity();
}

}  // namespace ormel::detail
