#include <functional>
#include <stop_token>
#include <string>
#include <utility>

#include "OrmelSDK/AppServerRun/TurnRun/AppServerTurnRun.h"
#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"

namespace ormel::detail {

namespace {

JSONValue messageObject(const std::optional<JSONValue>& id, std::string_view method,
                        const std::optional<JSONValue>& params) {
  JSONObjectBuilder message;
  message.set("id", id).set("method", JSONValue(method)).set("params", params);
  return message.build();
}

std::string timeoutMessage(std::string_view method, std::chrono::nanoseconds timeout) {
  const JSONValue seconds(std::chrono::duration<double>(timeout).count());
  return "App-server RPC " + std::string(method) + " timed out after " + seconds.encode() + " seconds";
}

}  // namespace

Task<JSONValue> AppServerTurnRun::sendRequest(std::string method, std::optional<JSONValue> params) {
  if (const auto error = stream_.completion().senderError()) std::rethrow_exception(error);
  const AppServerRequestID id = requests_.takeID();
  const auto operationGeneration = stream_.currentOperationGeneration();
  const JSONValue payload = messageObject(id.jsonValue(), method, params);
  const std::stop_token stop = co_await currentStopToken();
  if (stop.stop_requested()) throw CancelledError();

  const OneShot<JSONValue> response("response");
  PendingResponse request{response.resolver(), requestTimer(id, method, operationGeneration), method == "turn/steer"};
  // Kept before it is written: its answer, and its cancellation, find it.
  requests_.add(id, std::move(request));
  try {
    transport_.writePayload(payload);
  } catch (...) {
    requests_.remove(id);
    throw;
  }
  std::function<void()> cancel = [owner = weak_from_this(), strand = strand_, id] {
    auto take = [owner, id] {
      if (const auto run = owner.lock()) run->cancelPendingRequest(id);
    };
    strand.post(std::move(take), "cancelled request");
  };
  const std::stop_callback onStop(stop, std::move(cancel));
  co_return co_await response.waitThroughCancellation();
}

Timer AppServerTurnRun::requestTimer(const AppServerRequestID& id, std::string method,
                                     std::optional<std::uint64_t> operationGeneration) {
  auto expire = [owner = weak_from_this(), id, name = std::move(method), operationGeneration] {
    if (const auto run = owner.lock()) run->timeoutPendingRequest(id, name, operationGeneration);
  };
  return strand_.postAfter(configuration_.durations.request, std::move(expire), "request time-out");
}

void AppServerTurnRun::timeoutPendingRequest(const AppServerRequestID& id, std::string_view method,
                                             std::optional<std::uint64_t> operationGeneration) {
  const auto request = requests_.remove(id);
  if (!request) return;
  const std::string message = timeoutMessage(method, configuration_.durations.request);
  request->fail(std::make_exception_ptr(ThreadRunError::streamError(message)));
  const auto current = stream_.currentOperationGeneration();
  // One of an operation that is over fails alone.
  if (operationGeneration && operationGeneration != current) return;
  finishCurrent(StreamCompletion::failed({message, false}));
}

void AppServerTurnRun::cancelPendingRequest(const AppServerRequestID& id) {
  requests_.fail(id, std::make_exception_ptr(CancelledError()));
}

void AppServerTurnRun::writeNotification(std::string_view method, const std::optional<JSONValue>& params) {
  transport_.writePayload(messageObject(std::nullopt, method, params));
}

}  // namespace ormel::detail
