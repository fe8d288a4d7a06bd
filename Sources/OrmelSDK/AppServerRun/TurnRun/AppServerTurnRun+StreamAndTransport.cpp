#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include "OrmelSDK/AppServerRun/Connection/ServerConnection.h"
#include "OrmelSDK/AppServerRun/Launch/ExitDetail.h"
#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun+ProtocolHandling.h"
#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun.h"
#include "OrmelSDK/Base/OrmelProcessError.h"
#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Base/Visit.h"
#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"
#include "OrmelSDK/Concurrency/PreparedWork.h"
#include "OrmelSDK/JSON/JSONDecoding.h"

namespace ormel::detail {

namespace {

/// Tells the coordinator, on every way out, that the reader has done with a chunk.
class ChunkInHand {
 public:
  explicit ChunkInHand(AppServerProcessExitCoordinator& exitCoordinator) : exitCoordinator_(exitCoordinator) {}
  ChunkInHand(const ChunkInHand&) = delete;
  ChunkInHand& operator=(const ChunkInHand&) = delete;
  ~ChunkInHand() { exitCoordinator_.chunkProcessed(); }

 private:
  AppServerProcessExitCoordinator& exitCoordinator_;
};

AppServerProcessExitCoordinator::StartTimer timersOf(Scheduler& scheduler) {
  return [&scheduler](std::chrono::nanoseconds delay, std::function<void()> fire) {
    auto timer = std::make_shared<Timer>(scheduler.postAfter(delay, std::move(fire), "process exit grace"));
    return [timer] { timer->cancel(); };
  };
}

AppServerOutputChunkCallbacks callbacksOf(const std::shared_ptr<AppServerProcessExitCoordinator>& exitCoordinator) {
  AppServerOutputChunkCallbacks callbacks;
  callbacks.onReadStart = [exitCoordinator] { exitCoordinator->readStarted(); };
  callbacks.onNothing = [exitCoordinator] { exitCoordinator->readFoundNothing(); };
  callbacks.onChunkEnqueued = [exitCoordinator] { exitCoordinator->chunkEnqueued(); };
  callbacks.onEOF = [exitCoordinator] { exitCoordinator->readerDidReachEOF(); };
  return callbacks;
}

}  // namespace

Task<void> AppServerTurnRun::startProcess(std::uint64_t operationGeneration) {
  if (transport_.hasProcess()) co_return;
  co_await vetServerExecutable(*services_.blockingWork, configuration_.executablePath, configuration_.ormelOptions);
  stream_.requireCurrent(operationGeneration);
  if (!transport_.hasProcess()) launchProcess();
}

void AppServerTurnRun::launchProcess() {
  const std::uint64_t generation = transport_.nextGeneration();
  const LaunchSettings settings = serverLaunchSettings(
      configuration_.executablePath, configuration_.ormelPathDirectories, configuration_.ormelOptions);
  try {
    launchProcess(generation, settings);
  } catch (...) {
    // The end of a process that was started, but not adopted, must mean nothing.
    transport_.nextGeneration();
    lifecycle_.shutdownProcess();
    throw;
  }
}

void AppServerTurnRun::launchProcess(std::uint64_t generation, const LaunchSettings& settings) {
  auto connection = ServerConnection::launch(*services_.launcher, settings, std::make_shared<AppServerLockedData>(),
                                             terminationHandler(generation));
  const auto exitCoordinator = AppServerProcessExitCoordinator::create(
      [pipe = connection->outputPipe()] { return pipe->hasUnreadBytes(); }, timersOf(*services_.scheduler));
  ServerOutput output = connection->read(callbacksOf(exitCoordinator));
  transport_.adopt(std::move(connection), exitCoordinator);
  std::stop_token stop = output.stopToken();
  auto reader = readStdout(weak_from_this(), std::move(output), generation, exitCoordinator);
  std::move(reader).onStrand(strand()).withStopToken(std::move(stop)).detach();
}

TerminationHandler AppServerTurnRun::terminationHandler(std::uint64_t transportGeneration) {
  auto known = std::make_shared<Termination>();
  auto coordinate = [owner = weak_from_this(), known, transportGeneration] {
    const auto run = owner.lock();
    if (!run) return;
    try {
      run->coordinateProcessExit(transportGeneration, *known);
    } catch (const std::bad_alloc&) {
      run->handleProcessExit(transportGeneration, *known);
    }
  };
  const PreparedWork tell(strand(), std::move(coordinate), "process termination");
  return [tell, known, ended = closing_.expectProcess()](const Termination& termination) {
    ended.resume();
    *known = termination;
    tell.post();
  };
}

void AppServerTurnRun::coordinateProcessExit(std::uint64_t transportGeneration, const Termination& termination) {
  if (!transport_.isCurrent(transportGeneration)) return;
  auto report = [owner = weak_from_this(), transportGeneration, termination] {
    if (const auto run = owner.lock()) run->handleProcessExit(transportGeneration, termination);
  };
  transport_.processExitCoordinator()->processDidExit(configuration_.durations.processExitCoordinationGraceNanoseconds,
                                                      PreparedWork(strand(), std::move(report), "process exit"));
}

Task<void> AppServerTurnRun::readStdout(std::weak_ptr<AppServerTurnRun> owner, ServerOutput output,
                                        std::uint64_t transportGeneration,
                                        std::shared_ptr<AppServerProcessExitCoordinator> exitCoordinator) {
  std::exception_ptr failure;
  try {
    auto loop = readStdoutLoop(owner, std::move(output), transportGeneration, std::move(exitCoordinator));
    co_await std::move(loop);
  } catch (const CancelledError&) {
    co_return;
  } catch (...) {
    failure = std::current_exception();
  }
  const Self run = owner.lock();
  if (failure && run) run->handleReadFailure(transportGeneration, failure);
}

Task<void> AppServerTurnRun::readStdoutLoop(std::weak_ptr<AppServerTurnRun> owner, ServerOutput output,
                                            std::uint64_t transportGeneration,
                                            std::shared_ptr<AppServerProcessExitCoordinator> exitCoordinator) {
  while (co_await output.nextChunk()) {
    const ChunkInHand inHand(*exitCoordinator);
    const Self run = owner.lock();
    if (!run || output.isClosed()) co_return;
    if (run->stdoutChunkProcessingHook) {
      Task<void> hook = run->stdoutChunkProcessingHook(std::string(output.chunk()));
      co_await std::move(hook);
    }
    while (run->handleLines(output)) co_await run->strand().yield();
  }
  Self run = owner.lock();
  if (run && run->handleLines(output)) co_await run->strand().yield();
  if (!run || output.isClosed()) co_return;
  if (run->isErrorTextAwaited()) {
    auto lastWords =
        StandardErrorCollector::settled(run->transport_.errorOutput(), *run->services_.scheduler,
                                        run->configuration_.durations.processExitCoordinationGraceNanoseconds);
    run.reset();
    co_await std::move(lastWords);
    run = owner.lock();
  }
  if (run) run->handleEOF(transportGeneration);
}

bool AppServerTurnRun::handleLines(ServerOutput& output) {
  RunStream::EmissionBatch batch(stream_);
  bool hasEndedRequest = false;
  while (!hasEndedRequest) {
    const auto line = output.nextLine();
    if (!line) break;
    hasEndedRequest = handleIncomingLine(*line);
  }
  const ThreadHandoff handoff(!output.isReady() && isLastPieceOfThread());
  batch.end();
  return hasEndedRequest;
}

bool AppServerTurnRun::handleIncomingLine(std::string_view paddedLine) noexcept {
  bool isMessage = false;
  try {
    JSONValue message = decodePaddedJSON(paddedLine);
    isMessage = message.objectValue() != nullptr;
    return handleMessage(classifiedAppServerMessage(std::move(message)));
  } catch (...) {
    failByLine(std::current_exception(), isMessage ? std::nullopt : std::optional(paddedLine));
    return false;
  }
}

void AppServerTurnRun::failByLine(const std::exception_ptr& error, std::optional<std::string_view> garbage) noexcept {
  try {
    RunFailure failure = describedFailure(error);
    if (garbage && stream_.isPending()) failure.cause = causes().ofGarbage(*garbage);
    lifecycle_.finishCurrent(StreamCompletion::failed(std::move(failure)));
  } catch (...) {
    // There is no memory to tell of the failure. So short a text needs none.
    lifecycle_.finishCurrent(StreamCompletion::failed({"std::bad_alloc"}));
  }
}

bool AppServerTurnRun::handleMessage(const AppServerMessage& message) {
  recovery_.noteProtocolActivity();
  return visit(
      message,
      [this](const ServerRequestMessage& request) {
        serverRequestDispatcher_.dispatchServerRequest(request);
        return false;
      },
      [this](const ServerNotificationMessage& notification) {
        handleServerNotification(notificationContext_, notification);
        return false;
      },
      [this](const ResponseMessage& response) { return requests_.complete(response.id, response.result); },
      [this](const ErrorResponseMessage& error) {
        return requests_.fail(error.id, std::make_exception_ptr(ThreadRunError::streamError(error.message)));
      });
}

void AppServerTurnRun::handleEOF(std::uint64_t transportGeneration) {
  if (!transport_.isCurrent(transportGeneration)) return;
  if (!stream_.isPending()) {
    lifecycle_.shutdownProcess();
  } else if (recovery_.abortedByClient()) {
    lifecycle_.finishCurrent(StreamCompletion::aborted());
  } else {
    std::string message = transport_.errorText();
    if (message.empty()) message = "Ormel app-server terminated unexpectedly";
    auto cause = causeOfEnd(transport_.termination()->termination());
    lifecycle_.finishCurrent(StreamCompletion::failed({std::move(message), false, true, std::move(cause)}));
  }
}

void AppServerTurnRun::handleReadFailure(std::uint64_t transportGeneration, const std::exception_ptr& failure) {
  if (!transport_.isCurrent(transportGeneration)) return;
  if (stream_.isPending()) lifecycle_.finishCurrent(StreamCompletion::failed(describedFailure(failure)));
  lifecycle_.shutdownProcess();
}

FailureCauses::Cause AppServerTurnRun::causeOfEnd(const std::optional<Termination>& termination) const {
  return causes().ofEnd(termination, !transport_.errorText().empty(), transport_.didInitializeProcess());
}

void AppServerTurnRun::handleProcessExit(std::uint64_t transportGeneration, const Termination& termination) {
  // After the end of file it is `handleEOF` that owns the outcome.
  if (!transport_.isCurrent(transportGeneration) || transport_.outputHasEnded()) return;
  if (!stream_.isPending()) {
    lifecycle_.shutdownProcess();
  } else if (recovery_.abortedByClient()) {
    lifecycle_.finishCurrent(StreamCompletion::aborted());
  } else {
    const auto error = OrmelProcessError::exited(exitDetail(termination), transport_.errorText());
    lifecycle_.finishCurrent(StreamCompletion::failed({error.description(), false, true, causeOfEnd(termination)}));
  }
}

}  // namespace ormel::detail
