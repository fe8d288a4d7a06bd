#include "OrmelSDK/AppServerRun/RPCClient/AppServerRPCClient.h"

#include <limits>
#include <tuple>
#include <utility>

#include "OrmelSDK/Base/CheckedCounter.h"
#include "OrmelSDK/Base/FatalError.h"
#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"
#include "OrmelSDK/Concurrency/PreparedWork.h"
#include "OrmelSDK/Concurrency/Sleep.h"
#include "OrmelSDK/Text/TrimmedText.h"

namespace ormel::detail {

namespace {

constexpr std::chrono::milliseconds exitPollInterval{10};
constexpr int exitPolls = 50;
constexpr const char* terminated = "App-server RPC client terminated";

JSONValue outgoingMessage(const std::optional<JSONValue>& id, std::string_view method,
                          const std::optional<JSONValue>& params) {
  JSONObjectBuilder message;
  message.set("id", id).set("method", JSONValue(method)).set("params", params);
  return message.build();
}

[[noreturn]] void failReleasedHandshake() {
  throw ThreadRunError::streamError("App-server RPC client was released during initialization");
}

/// One pass of a poll: a cancelled caller does not wait, but polls on.
Task<void> pollPause(Scheduler& scheduler) {
  try {
    co_await sleepFor(scheduler, exitPollInterval);
  } catch (const CancelledError&) {
    co_return;
  }
}

}  // namespace

std::shared_ptr<AppServerRPCClient> AppServerRPCClient::create(AppServerRPCClientConfiguration configuration,
                                                               ServerServices services, Strand strand) {
  return std::shared_ptr<AppServerRPCClient>(
      new AppServerRPCClient(std::move(configuration), services, std::move(strand)));
}

AppServerRPCClient::AppServerRPCClient(AppServerRPCClientConfiguration configuration, ServerServices services,
                                       Strand strand)
    : configuration_(std::move(configuration)), services_(services), strand_(std::move(strand)) {
  std::tie(notificationContinuation_, notificationStream_) =
      EventChannel<AppServerRPCNotification>::make(ChannelLimit::unbounded(), "notification of the server");
}

AppServerRPCClient::~AppServerRPCClient() { notificationContinuation_.finish(); }

Task<void> AppServerRPCClient::startProcess() {
  co_await strand_.enter();
  if (process_) co_return;
  const LaunchSettings settings = serverLaunchSettings(
      configuration_.executablePath, configuration_.ormelPathDirectories, configuration_.ormelOptions);
  auto vetting =
      vetServerExecutable(*services_.blockingWork, configuration_.executablePath, configuration_.ormelOptions);
  const std::uint64_t terminations = terminations_;
  co_await std::move(vetting);
  // Both can happen during the assessment: the client's end, and a start by another caller.
  if (terminations_ != terminations) throw ThreadRunError::streamError(terminated);
  if (!process_) launch(settings);
}

void AppServerRPCClient::launch(const LaunchSettings& settings) {
  process_ = ServerConnection::launch(*services_.launcher, settings, stderrAccumulator_);
  try {
    ServerOutput output = process_->read();
    const std::stop_token closed = output.stopToken();
    auto reader = readStdout(weak_from_this(), strand_, std::move(output), process_->errorOutput(),
                             process_->termination(), *services_.scheduler);
    std::move(reader).onStrand(strand_).withStopToken(closed).detach();
  } catch (...) {
    // Nobody would hear its answers.
    process_.reset();
    throw;
  }
}

Task<void> AppServerRPCClient::initializeIfNeeded() {
  co_await strand_.enter();
  if (didInitializeProcess_) co_return;
  const OneShot<void> outcome("handshake with the server");
  if (initializationTask_) {
    initializationTask_->waiters.push_back(outcome.resolver());
  } else {
    const auto task = std::make_shared<InitializationTask>();
    task->waiters.push_back(outcome.resolver());
    initializationTask_ = task;
    try {
      initialize(weak_from_this(), task).withStopToken({}).detach();
    } catch (...) {
      if (initializationTask_ == task) initializationTask_.reset();
      throw;
    }
  }
  co_await outcome.wait();
}

Task<void> AppServerRPCClient::initialize(std::weak_ptr<AppServerRPCClient> owner,
                                          std::shared_ptr<InitializationTask> task) {
  std::exception_ptr failure;
  try {
    auto performing = performInitialization(owner, task);
    co_await std::move(performing);
  } catch (...) {
    failure = std::current_exception();
  }
  const Self client = owner.lock();
  if (client && client->initializationTask_ == task) {
    client->didInitializeProcess_ = !failure;
    client->initializationTask_.reset();
  }
  for (const OneShotResolver<void>& waiter : task->waiters) {
    if (failure) {
      waiter.fail(failure);
    } else {
      waiter.resume();
    }
  }
}

Task<void> AppServerRPCClient::performInitialization(std::weak_ptr<AppServerRPCClient> owner,
                                                     std::shared_ptr<InitializationTask> task) {
  Self client = owner.lock();
  if (!client) failReleasedHandshake();
  const OneShot<JSONValue> response = client->beginRequest(
      client->takeRequestID(), "initialize", appServerInitializeParams(client->configuration_.initializeCapabilities));
  // A handshake that nobody waits for any more must not keep the server process.
  client.reset();
  try {
    co_await response.wait();
  } catch (const AbandonedError&) {
    failReleasedHandshake();
  }
  client = owner.lock();
  if (!client) failReleasedHandshake();
  // The process that answered may be gone, and another one must have a handshake of its own.
  if (client->initializationTask_ != task) detail::writePayload(nullptr, JSONValue());
  client->writePayload(outgoingMessage(std::nullopt, "initialized", std::nullopt));
}

AppServerRequestID AppServerRPCClient::takeRequestID() {
  if (nextRequestID_ == std::numeric_limits<std::int64_t>::max()) fatalError("a client has used up its request ids");
  return AppServerRequestID::integer(nextRequestID_++);
}

OneShot<JSONValue> AppServerRPCClient::beginRequest(const AppServerRequestID& id, std::string_view method,
                                                    const std::optional<JSONValue>& params) {
  const JSONValue payload = outgoingMessage(id.jsonValue(), method, params);
  OneShot<JSONValue> response("response");
  // Register before writing, so that an early answer finds the entry.
  pendingResponses_.emplace(id, response.resolver());
  try {
    writePayload(payload);
  } catch (...) {
    pendingResponses_.erase(id);
    throw;
  }
  return response;
}

Task<JSONValue> AppServerRPCClient::sendRequest(std::string method, std::optional<JSONValue> params) {
  co_await strand_.enter();
  const AppServerRequestID id = takeRequestID();
  const std::stop_token stop = co_await currentStopToken();
  if (stop.stop_requested()) throw CancelledError();
  auto take = [owner = weak_from_this(), id] {
    if (const auto client = owner.lock()) client->cancelPendingRequest(id);
  };
  PreparedWork cancel(strand_, std::move(take), "cancelled request");
  const OneShot<JSONValue> response = beginRequest(id, method, params);
  const std::stop_callback onStop(stop, std::move(cancel));
  co_return co_await response.waitThroughCancellation();
}

void AppServerRPCClient::cancelPendingRequest(const AppServerRequestID& id) {
  if (const auto response = takePendingResponse(id)) response->fail(CancelledError());
}

std::optional<OneShotResolver<JSONValue>> AppServerRPCClient::takePendingResponse(const AppServerRequestID& id) {
  auto node = pendingResponses_.extract(id);
  if (node.empty()) return std::nullopt;
  return std::move(node.mapped());
}

void AppServerRPCClient::completePendingResponses(const ThreadRunError& failure) {
  completePendingResponses(std::make_exception_ptr(failure));
}

void AppServerRPCClient::completePendingResponses(const std::exception_ptr& error) noexcept {
  for (const auto& [id, response] : std::exchange(pendingResponses_, {})) response.fail(error);
}

Task<void> AppServerRPCClient::sendNotification(std::string method, std::optional<JSONValue> params) {
  co_await strand_.enter();
  writePayload(outgoingMessage(std::nullopt, method, params));
}

void AppServerRPCClient::writePayload(const JSONValue& payload) { detail::writePayload(process_.get(), payload); }

Task<void> AppServerRPCClient::finishNotifications() {
  co_await strand_.enter();
  if (process_) process_->closeInput();
  for (int poll = 0; poll < exitPolls && process_ && process_->isRunning(); ++poll) {
    co_await pollPause(*services_.scheduler);
  }
  // Nothing is in flight in a client that only notifies; a request that is must not wait for ever.
  failPendingResponses(eofMessage(), causeOfEnd());
}

Task<void> AppServerRPCClient::terminate() {
  co_await strand_.enter();
  incrementCounter(terminations_);
  completePendingResponses(ThreadRunError::streamError(terminated));
  notificationContinuation_.finish();
  shutdownProcess();
}

Task<void> AppServerRPCClient::readStdout(std::weak_ptr<AppServerRPCClient> owner, Strand strand, ServerOutput output,
                                          std::shared_ptr<StandardErrorCollector> errorOutput,
                                          std::shared_ptr<TerminationNotice> termination, Scheduler& scheduler) {
  const std::stop_token closed = output.stopToken();
  std::exception_ptr failure;
  try {
    auto loop =
        readStdoutLoop(owner, strand, std::move(output), std::move(errorOutput), std::move(termination), scheduler);
    co_await std::move(loop);
  } catch (const CancelledError&) {
    co_return;
  } catch (...) {
    failure = std::current_exception();
  }
  const Self client = owner.lock();
  if (failure && client && !closed.stop_requested()) client->failPendingResponses(failure);
}

Task<void> AppServerRPCClient::readStdoutLoop(std::weak_ptr<AppServerRPCClient> owner, Strand strand,
                                              ServerOutput output, std::shared_ptr<StandardErrorCollector> errorOutput,
                                              std::shared_ptr<TerminationNotice> termination, Scheduler& scheduler) {
  constexpr std::chrono::milliseconds settlingLimit{100};
  // The process may be gone already. Its starter sends the handshake first, which then fails with the reason.
  co_await strand.yield();
  bool isOpen = true;
  bool isEndAwaited = false;
  while (isOpen) {
    isOpen = co_await output.nextChunk();
    const Self client = owner.lock();
    if (!client || output.isClosed()) co_return;
    while (const auto line = output.nextLine()) client->handleIncomingLine(*line);
    isEndAwaited = !client->pendingResponses_.empty();
  }
  if (isEndAwaited) co_await lastWordsAndEnd(std::move(errorOutput), std::move(termination), scheduler, settlingLimit);
  const Self client = owner.lock();
  if (client && !output.isClosed()) client->failPendingResponses(client->eofMessage(), client->causeOfEnd());
}

FailureCauses AppServerRPCClient::causes() const {
  return {configuration_.executablePath, configuration_.ormelPathDirectories, configuration_.ormelOptions};
}

FailureCauses::Cause AppServerRPCClient::causeOfEnd() const {
  // Looking at files is for somebody who is told of it.
  if (pendingResponses_.empty() || !process_) return nullptr;
  const bool hadErrorOutput = !trimmed(stderrAccumulator_->string()).empty();
  return causes().ofEnd(process_->termination()->termination(), hadErrorOutput, didInitializeProcess_);
}

void AppServerRPCClient::failPendingResponses(const std::string& message, FailureCauses::Cause cause) {
  completePendingResponses(ThreadRunError::passing(message, std::move(cause)));
  shutdownProcess();
}

void AppServerRPCClient::failPendingResponses(const std::exception_ptr& error) noexcept {
  completePendingResponses(error);
  shutdownProcess();
}

void AppServerRPCClient::shutdownProcess() {
  initializationTask_.reset();
  process_.reset();
  didInitializeProcess_ = false;
}

}  // namespace ormel::detail
