#include "OrmelSDK/AppServerRun/TurnRun/RunRequests.h"

#include <exception>
#include <limits>
#include <utility>

#include "OrmelSDK/Base/FatalError.h"

namespace ormel::detail {

namespace {

void requireFirst(bool isFirst) {
  if (!isFirst) fatalError("a request of a run was ended twice");
}

}  // namespace

void PendingResponse::resume(const JSONValue& result) const { requireFirst(continuation.resume(result)); }

void PendingResponse::fail(const std::exception_ptr& error) const { requireFirst(continuation.fail(error)); }

AppServerRequestID RunRequests::takeID() {
  if (nextRequestID_ == std::numeric_limits<std::int64_t>::max()) fatalError("a run has used up its request ids");
  return AppServerRequestID::integer(nextRequestID_++);
}

void RunRequests::add(const AppServerRequestID& id, PendingResponse request) {
  pendingResponses_.emplace(id, std::move(request));
}

std::optional<PendingResponse> RunRequests::remove(const AppServerRequestID& id) {
  auto node = pendingResponses_.extract(id);
  if (node.empty()) return std::nullopt;
  node.mapped().timeoutTask.cancel();
  return std::move(node.mapped());
}

bool RunRequests::complete(const AppServerRequestID& id, const JSONValue& result) {
  const auto request = remove(id);
  if (request) request->resume(result);
  return request.has_value();
}

bool RunRequests::fail(const AppServerRequestID& id, const std::exception_ptr& error) {
  const auto request = remove(id);
  if (request) request->fail(error);
  return request.has_value();
}

void RunRequests::release(const StreamCompletion& completion) {
  const std::exception_ptr error = completion.waiterError();
  for (PendingResponse& request : take(completion.kind() == StreamCompletion::Kind::failed)) {
    request.timeoutTask.cancel();
    request.fail(error);
  }
}

std::vector<PendingResponse> RunRequests::take(bool alsoSurvivors) {
  std::vector<PendingResponse> taken;
  for (auto entry = pendingResponses_.begin(); entry != pendingResponses_.end();) {
    if (entry->second.survivesNormalStreamCompletion && !alsoSurvivors) {
      ++entry;
      continue;
    }
    taken.push_back(std::move(entry->second));
    entry = pendingResponses_.erase(entry);
  }
  return taken;
}

}  // namespace ormel::detail
