#include "OrmelSDK/AppServerRun/TurnRun/RequestSender.h"

#include <stop_token>
#include <utility>

#include "OrmelSDK/AppServerRun/TurnRun/RunLife.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunLifecycle.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunRequests.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunStream.h"
#include "OrmelSDK/AppServerRun/TurnRun/RunTransport.h"
#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"
#include "OrmelSDK/Concurrency/PreparedWork.h"

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

Task<JSONValue> RequestSender::sendRequest(std::string method, std::optional<JSONValue> params) {
  if (const auto error = run_.stream.streamCompletion().senderError()) std::rethrow_exception(error);
  const AppServerRequestID id = run_.requests.takeID();
  const auto operationGeneration = run_.stream.currentOperationGeneration();
  const JSONValue payload = messageObject(id.jsonValue(), method, params);
  const std::stop_token stop = co_await currentStopToken();
  if (stop.stop_requested()) throw CancelledError();

  const OneShot<JSONValue> response("response");
  PendingResponse request{response.resolver(), timeoutTask(id, method, operationGeneration), method == "turn/steer"};
  PreparedWork cancel(run_.life.strand(), run_.life.whileAlive([this, id] { cancelPendingRequest(id); }),
                      "cancelled request");
  // Register before writing, so that an early answer or cancellation finds the entry.
  run_.requests.add(id, std::move(request));
  try {
    run_.transport.writePayload(payload);
  } catch (...) {
    run_.requests.remove(id);
    throw;
  }
  const std::stop_callback onStop(stop, std::move(cancel));
  co_return co_await response.waitThroughCancellation();
}

Timer RequestSender::timeoutTask(const AppServerRequestID& id, std::string method,
                                 std::optional<std::uint64_t> operationGeneration) {
  auto expire = [this, id, name = std::move(method), operationGeneration] {
    timeoutPendingRequest(id, name, operationGeneration);
  };
  return run_.life.postAfter(run_.requestTimeout, std::move(expire), "request time-out");
}

void RequestSender::timeoutPendingRequest(const AppServerRequestID& id, std::string_view method,
                                          std::optional<std::uint64_t> operationGeneration) {
  const auto request = run_.requests.remove(id);
  if (!request) return;
  const std::string message = timeoutMessage(method, run_.requestTimeout);
  // Each process is asked this once, and nothing before it has been answered.
  const auto cause = method == "initialize" ? run_.causes.ofUnansweredHandshake(run_.requestTimeout) : nullptr;
  request->fail(std::make_exception_ptr(ThreadRunError::passing(message, cause)));
  // A request that outlived its operation must not fail the current one.
  if (operationGeneration && operationGeneration != run_.stream.currentOperationGeneration()) return;
  run_.lifecycle.finishCurrent(StreamCompletion::failed({message, false, true, cause}));
}

void RequestSender::cancelPendingRequest(const AppServerRequestID& id) {
  run_.requests.fail(id, std::make_exception_ptr(CancelledError()));
}

void RequestSender::writeNotification(std::string_view method, const std::optional<JSONValue>& params) {
  run_.transport.writePayload(messageObject(std::nullopt, method, params));
}

}  // namespace ormel::detail
