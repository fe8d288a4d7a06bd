#include "OrmelSDK/SetUpDiagnosis.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <stop_token>
#include <utility>

#include "OrmelSDK/AppServerRun/Launch/AppServerLaunch.h"
#include "OrmelSDK/AppServerRun/Launch/FailureCauses.h"
#include "OrmelSDK/AppServerRun/Launch/OrmelBinaryLocator.h"
#include "OrmelSDK/AppServerRun/Launch/Secrets.h"
#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"
#include "OrmelSDK/KeptProcess.h"
#include "OrmelSDK/Platform/ExecutableExamination.h"
#include "OrmelSDK/Text/TrimmedText.h"

namespace ormel::detail {

namespace {

using Environment = std::map<std::string, std::string>;

std::string withoutSecrets(std::string_view text, const Environment& environment) {
  return startWithoutSecrets(text, std::string::npos, environment);
}

bool isExecutable(const ExecutableFinding& finding) {
  return finding.verdict == ExecutableVerdict::usable || finding.verdict == ExecutableVerdict::wrongArchitecture ||
         finding.verdict == ExecutableVerdict::badInterpreter;
}

std::vector<Diagnosis::Candidate> candidatesOf(const AppServerRPCClientConfiguration& configuration,
                                               const Environment& environment) {
  const auto path = environment.find("PATH");
  const std::string searchPath = path == environment.end() ? "" : path->second;
  const OrmelBinaryLocator locator;
  std::vector<Diagnosis::Candidate> candidates;
  bool isChosen = false;
  for (const SearchedPlace& place : locator.searchedPlaces(configuration.ormelOptions.ormelPathOverride)) {
    Diagnosis::Candidate candidate;
    candidate.origin = place.origin;
    candidate.finding = examineExecutable(place.path, searchPath);
    candidate.isSelected = !isChosen && isExecutable(candidate.finding) &&
                           locator.resolutionOf(place.path, false).executablePath == configuration.executablePath;
    isChosen = isChosen || candidate.isSelected;
    candidates.push_back(std::move(candidate));
  }
  return candidates;
}

/// "1.2.3" of "name/1.2.3 (more)".
std::optional<std::string> versionIn(const JSONValue& handshake) {
  const JSONValue* const agent = handshake.find("userAgent");
  const auto text = agent ? agent->stringValue() : std::nullopt;
  const std::size_t slash = text ? text->find('/') : std::string_view::npos;
  if (slash == std::string_view::npos) return std::nullopt;
  const std::string_view version = text->substr(slash + 1, text->find(' ', slash) - slash - 1);
  return version.empty() ? std::nullopt : std::optional<std::string>(version);
}

void tellHandshake(Diagnosis& diagnosis, const JSONValue& result, const Environment& environment) {
  diagnosis.isUsable = true;
  diagnosis.handshake = JSONValue::decode(withoutSecrets(result.encode(), environment));
  diagnosis.version = versionIn(*diagnosis.handshake);
}

void tellProblem(Diagnosis& diagnosis, const Error& error, const Environment& environment) {
  diagnosis.isUsable = false;
  diagnosis.problem = withoutSecrets(error.description(), environment);
  diagnosis.advice = withoutSecrets(error.advice(), environment);
  diagnosis.cause = error.cause();
}

void tellFailure(Diagnosis& diagnosis, const std::exception_ptr& failure, const Environment& environment) {
  try {
    std::rethrow_exception(failure);
  } catch (const Error& error) {
    tellProblem(diagnosis, error, environment);
  } catch (const std::exception& error) {
    tellProblem(diagnosis, Error(error.what()), environment);
  } catch (...) {
    tellProblem(diagnosis, Error("Unknown failure"), environment);
  }
}

/// That a name was passed over, for a server that works all the same.
void remarkOnPassedOver(Diagnosis& diagnosis, const FailureCauses& causes) {
  const auto passed = causes.passedOver();
  if (!passed || passed->finding.verdict == ExecutableVerdict::usable) return;
  diagnosis.advice = passed->namedBy + " names " + quotedForPeople(passed->finding.path) +
                     ", which was passed over: " + std::string(executableVerdictText(passed->finding.verdict)) + ".";
}

void tellErrorOutput(Diagnosis& diagnosis, const std::string& text, const Environment& environment) {
  constexpr std::size_t keptBytes = 4096;
  const std::string masked = withoutSecrets(trimmed(text), environment);
  diagnosis.errorOutput = masked.substr(masked.size() - std::min(masked.size(), keptBytes));
}

ThreadRunError timedOut(const FailureCauses& causes, std::chrono::milliseconds timeout, bool wasStarted) {
  const std::string seconds = JSONValue(std::chrono::duration<double>(timeout).count()).encode() + " seconds";
  if (!wasStarted) return ThreadRunError::streamError("The check of the server executable timed out after " + seconds);
  return ThreadRunError::streamError("App-server RPC initialize timed out after " + seconds,
                                     causes.ofUnansweredHandshake(timeout));
}

Task<JSONValue> shakeHands(std::shared_ptr<AppServerRPCClient> client,
                           AppServerInitializeCapabilities initializeCapabilities) {
  co_await client->startProcess();
  auto asking = client->sendRequest("initialize", appServerInitializeParams(initializeCapabilities));
  const JSONValue result = co_await std::move(asking);
  co_await client->sendNotification("initialized");
  co_return result;
}

/// The result of the handshake, or why there is none.
struct HandshakeOutcome {
  HandshakeOutcome() = default;
  JSONValue result;
  std::exception_ptr failure;
};

Task<HandshakeOutcome> outcomeOf(Task<JSONValue> handshake) {
  HandshakeOutcome outcome;
  try {
    outcome.result = co_await std::move(handshake);
  } catch (...) {
    outcome.failure = std::current_exception();
  }
  co_return outcome;
}

bool isCancellation(const std::exception_ptr& failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const CancelledError&) {
    return true;
  } catch (...) {
    return false;
  }
}

/// The part that is bounded in time: ends after it at the latest, and when the caller is cancelled.
Task<HandshakeOutcome> handshakeWithin(std::shared_ptr<AppServerRPCClient> client,
                                       AppServerInitializeCapabilities capabilities, Scheduler& scheduler,
                                       std::chrono::milliseconds timeout, std::stop_token callerStop) {
  std::stop_source limit;
  std::function<void()> stop = [limit]() mutable { limit.request_stop(); };
  const std::stop_callback onCallerStop(callerStop, stop);
  const Timer timer = scheduler.postAfter(timeout, stop, "limit of the diagnosis");
  auto outcome = outcomeOf(shakeHands(client, std::move(capabilities)).withStopToken(limit.get_token()));
  co_return co_await std::move(outcome);
}

Task<Diagnosis> diagnosed(AppServerRPCClientConfiguration configuration, std::chrono::milliseconds timeout,
                          ServerServices services, std::stop_token callerStop) {
  Scheduler& scheduler = *services.scheduler;
  const auto start = scheduler.now();
  const Environment environment =
      buildAppServerEnvironment(configuration.ormelOptions, configuration.ormelPathDirectories);
  const FailureCauses causes(configuration.executablePath, configuration.ormelPathDirectories,
                             configuration.ormelOptions);
  Diagnosis diagnosis;
  diagnosis.executablePath = configuration.executablePath;
  diagnosis.isNamed = configuration.ormelOptions.selectedOrmelPathOverride;
  diagnosis.candidates = candidatesOf(configuration, environment);
  diagnosis.environment = withMaskedSecrets(environment);

  KeptProcess process(*services.launcher);
  const ServerServices ownServices(scheduler, process, *services.blockingWork);
  auto client = AppServerRPCClient::create(configuration, ownServices, Strand(scheduler, "diagnosis"));
  co_await client->strand().enter();
  auto shaking = handshakeWithin(client, configuration.initializeCapabilities, scheduler, timeout, callerStop);
  const HandshakeOutcome outcome = co_await std::move(shaking);
  co_await client->terminate();
  co_await process.end(scheduler);
  if (callerStop.stop_requested()) throw CancelledError();

  if (!outcome.failure) {
    tellHandshake(diagnosis, outcome.result, environment);
    remarkOnPassedOver(diagnosis, causes);
  } else if (isCancellation(outcome.failure)) {
    tellProblem(diagnosis, timedOut(causes, timeout, process.wasStarted()), environment);
  } else {
    tellFailure(diagnosis, outcome.failure, environment);
  }
  tellErrorOutput(diagnosis, client->errorText(), environment);
  diagnosis.duration = std::chrono::nanoseconds(scheduler.now() - start);
  co_return diagnosis;
}

}  // namespace

Task<Diagnosis> diagnoseSetUp(AppServerRPCClientConfiguration configuration, std::chrono::milliseconds timeout,
                              ServerServices services) {
  const std::stop_token stop = co_await currentStopToken();
  // Nothing but the handshake is cut short by a cancellation: the process is to be ended in any case.
  auto diagnosing = diagnosed(std::move(configuration), timeout, services, stop);
  co_return co_await std::move(diagnosing).withStopToken({});
}

}  // namespace ormel::detail
