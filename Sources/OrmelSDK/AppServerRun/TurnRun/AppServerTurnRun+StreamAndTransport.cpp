#include <exception>
#include <utility>

#include "OrmelSDK/AppServerRun/Framing/AppServerJSONLineBuffer.h"
#include "OrmelSDK/AppServerRun/Framing/AppServerOutputChunks.h"
#include "OrmelSDK/AppServerRun/Launch/AppServerLaunch.h"
#include "OrmelSDK/AppServerRun/Launch/ExecutableVetting.h"
#include "OrmelSDK/AppServerRun/Launch/ExitDetail.h"
#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun.h"
#include "OrmelSDK/Base/CheckedCounter.h"
#include "OrmelSDK/Base/OrmelProcessError.h"
#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"
#include "OrmelSDK/JSON/JSONDecoding.h"
#include "OrmelSDK/Platform/ChunkBuffers.h"

namespace ormel::detail {

namespace {

constexpr const char* processStarter = "/usr/bin/env";

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

/// The next chunk, or nothing when there will be none.
Task<std::optional<ByteBuffer>> nextChunk(EventChannel<ByteBuffer>& chunks) {
  try {
    co_return co_await chunks.next();
  } catch (const AbandonedError&) {
    // The pipe was closed from this side.
    co_return std::nullopt;
  }
}

}  // namespace

Task<void> AppServerTurnRun::startProcess(std::uint64_t operationGeneration) {
  if (transport_.hasProcess()) co_return;
  if (needsVetting(configuration_.ormelOptions)) {
    UniqueFunction<void()> vetting = [path = configuration_.executablePath, options = configuration_.ormelOptions] {
      requireTrustedExecutable(path, options);
    };
    co_await runBlocking(*services_.blockingWork, std::move(vetting));
    stream_.requireCurrent(operationGeneration);
    if (transport_.hasProcess()) co_return;
  }
  launchProcess();
}

void AppServerTurnRun::launchProcess() {
  const std::uint64_t generation = transport_.nextGeneration();
  LaunchSettings settings;
  settings.executable = processStarter;
  settings.arguments = buildAppServerArguments(configuration_.executablePath, configuration_.ormelOptions);
  settings.environment = buildAppServerEnvironment(configuration_.ormelOptions, configuration_.ormelPathDirectories);

  // Set before anything can ask: the coordinator first hears of the process on this strand.
  const auto output = std::make_shared<std::shared_ptr<PipeReader>>();
  const auto exitCoordinator = AppServerProcessExitCoordinator::create([output] { return (*output)->hasUnreadBytes(); },
                                                                       timersOf(*services_.scheduler));
  ServerProcess process;
  try {
    process.child = services_.launcher->launch(settings, terminationHandler(generation, exitCoordinator));
  } catch (...) {
    transport_.nextGeneration();
    shutdownProcess();
    throw OrmelProcessError::spawnFailed(describedFailure(std::current_exception()).message);
  }
  *output = process.child->output();
  process.errorOutput = std::make_shared<StandardErrorCollector>();
  process.errorOutput->start(process.child->errorOutput());
  process.exitCoordinator = exitCoordinator;

  AppServerOutputChunkCallbacks callbacks;
  callbacks.onReadStart = [exitCoordinator] { exitCoordinator->readStarted(); };
  callbacks.onChunkEnqueued = [exitCoordinator] { exitCoordinator->chunkEnqueued(); };
  callbacks.onEOF = [exitCoordinator] { exitCoordinator->readerDidReachEOF(); };
  auto chunks = appServerOutputChunks(*output, std::move(callbacks));
  Reading reading{weak_from_this(), services_.scheduler, generation,
                  exitCoordinator,  process.errorOutput, configuration_.durations.processExitGrace};
  auto reader = readStdoutLoop(std::move(reading), std::move(chunks));
  std::move(reader).onStrand(strand_).withStopToken(transport_.adopt(std::move(process))).detach();
}

TerminationHandler AppServerTurnRun::terminationHandler(
    std::uint64_t transportGeneration, std::shared_ptr<AppServerProcessExitCoordinator> exitCoordinator) {
  return [owner = weak_from_this(), strand = strand_, transportGeneration,
          grace = configuration_.durations.processExitGrace,
          coordinator = std::move(exitCoordinator)](const Termination& termination) {
    auto report = [owner, strand, transportGeneration, termination] {
      auto handle = [owner, transportGeneration, termination] {
        if (const auto run = owner.lock()) run->handleProcessExit(transportGeneration, termination);
      };
      strand.post(std::move(handle), "process exit");
    };
    auto tell = [coordinator, grace, exitReport = std::move(report)] {
      coordinator->processDidExit(grace, exitReport);
    };
    strand.post(std::move(tell), "process termination");
  };
}

AppServerTurnRun::Self AppServerTurnRun::Reading::run(const std::stop_token& stop) const {
  auto run = owner.lock();
  return run && run->isReading(transportGeneration, stop) ? run : nullptr;
}

Task<void> AppServerTurnRun::readStdoutLoop(Reading reading, EventChannel<ByteBuffer> chunks) {
  const std::stop_token stop = co_await currentStopToken();
  AppServerJSONLineBuffer lines;
  while (auto chunk = co_await nextChunk(chunks)) {
    const ChunkInHand inHand(*reading.exitCoordinator);
    auto run = reading.run(stop);
    if (!run) co_return;
    if (run->stdoutChunkProcessingHook) {
      Task<void> hook = run->stdoutChunkProcessingHook(std::string(chunk->view()));
      run.reset();
      co_await std::move(hook);
      run = reading.run(stop);
      if (!run) co_return;
    }
    std::string_view rest = chunk->view();
    while (true) {
      bool hasEndedRequest = false;
      {
        RunStream::EmissionBatch gathering(run->stream_);
        rest = lines.appendWhile(rest, [&](std::string_view line) {
          if (run->isReading(reading.transportGeneration, stop)) hasEndedRequest = run->handleIncomingLine(line);
          return !hasEndedRequest;
        });
        const ThreadHandoff leaving(!chunks.isReady() && isLastPieceOfThread());
        gathering.end();
      }
      if (!hasEndedRequest) break;
      auto givingWay = yieldToWaiters(std::move(run));
      co_await std::move(givingWay);
      run = reading.run(stop);
      if (!run) co_return;
    }
    giveBackChunkBuffer(*std::move(chunk));
    if (!run->isReading(reading.transportGeneration, stop)) co_return;
  }
  if (auto last = lines.finish()) {
    const std::size_t size = last->size();
    last->append(jsonPadding, ' ');
    auto run = reading.run(stop);
    if (run && run->handleIncomingLine(std::string_view(*last).substr(0, size))) {
      auto givingWay = yieldToWaiters(std::move(run));
      co_await std::move(givingWay);
    }
  }
  auto run = reading.run(stop);
  if (run && run->isErrorTextAwaited()) {
    run.reset();
    co_await StandardErrorCollector::settled(reading.errorOutput, *reading.scheduler, reading.settlingLimit);
    run = reading.run(stop);
  }
  if (run) run->handleEOF(reading.transportGeneration);
}

Task<void> AppServerTurnRun::yieldToWaiters(Self self) {
  const Strand strand = self->strand_;
  self.reset();
  co_await strand.yield();
}

bool AppServerTurnRun::handleIncomingLine(std::string_view paddedLine) noexcept {
  try {
    return handleMessage(classifiedAppServerMessage(decodePaddedJSON(paddedLine)));
  } catch (...) {
    finishCurrent(StreamCompletion::failed(describedFailure(std::current_exception())));
    return false;
  }
}

bool AppServerTurnRun::handleMessage(const AppServerMessage& message) {
  incrementCounter(protocolActivityGeneration_);
  if (const auto* request = std::get_if<ServerRequestMessage>(&message)) {
    dispatchServerRequest(*request);
  } else if (const auto* notification = std::get_if<ServerNotificationMessage>(&message)) {
    handleServerNotification(*notification);
  } else if (const auto* response = std::get_if<ResponseMessage>(&message)) {
    return requests_.complete(response->id, response->result);
  } else if (const auto* error = std::get_if<ErrorResponseMessage>(&message)) {
    return requests_.fail(error->id, std::make_exception_ptr(ThreadRunError::streamError(error->message)));
  }
  return false;
}

void AppServerTurnRun::handleEOF(std::uint64_t transportGeneration) {
  if (!isCurrentTransport(transportGeneration)) return;
  if (!stream_.isPending()) {
    shutdownProcess();
  } else if (abortedByClient_) {
    finishCurrent(StreamCompletion::aborted());
  } else {
    std::string message = transport_.errorText();
    if (message.empty()) message = "Ormel app-server terminated unexpectedly";
    finishCurrent(StreamCompletion::failed({std::move(message), false}));
  }
}

void AppServerTurnRun::handleProcessExit(std::uint64_t transportGeneration, const Termination& termination) {
  // After the end of file it is `handleEOF` that owns the outcome.
  if (!isCurrentTransport(transportGeneration) || transport_.outputHasEnded()) return;
  if (!stream_.isPending()) {
    shutdownProcess();
  } else if (abortedByClient_) {
    finishCurrent(StreamCompletion::aborted());
  } else {
    const auto error = OrmelProcessError::exited(exitDetail(termination), transport_.errorText());
    finishCurrent(StreamCompletion::failed({error.description(), false}));
  }
}

}  // namespace ormel::detail
